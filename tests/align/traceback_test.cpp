#include "align/traceback.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"

namespace {

struct Aligned {
  int32_t best = 0;
  PathStore store;
  MoveFlags flags;
};

Aligned align(const Problem& problem, int32_t threshold) {
  Params p = problem.p;
  p.MIN_SCORE = threshold;
  Aligned aligned;
  aligned.flags = uchararr(problem.dlen(), problem.qlen());
  std::fill(aligned.flags.cells.begin(), aligned.flags.cells.end(), uint8_t{0xff});
  const int8_t* query = problem.query.data();
  const int8_t* target = problem.target.data();
  aligned.best = problem.flagged()
                     ? swpathli(query, problem.qlen(), target, problem.dlen(), problem.table, p.LD_PEN,
                                p.LI_PEN, aligned.store, aligned.flags, problem.matrix, &p)
                     : swpathl(query, problem.qlen(), target, problem.dlen(), problem.table, p.LD_PEN,
                               aligned.store, aligned.flags, problem.matrix, &p);
  return aligned;
}

using Texts = std::vector<std::string>;
template <class Paths>
Texts texts(const Paths& paths) {
  Texts all;
  for (const PathRec& path : paths) {
    all.push_back("(" + std::to_string(path.start_i) + "," + std::to_string(path.start_j) + ")-(" +
                  std::to_string(path.end_i) + "," + std::to_string(path.end_j) + ") " +
                  std::to_string(path.best));
  }
  return all;
}

// The paths that should be kept, from the model's cells and two rolling rows of records. It holds, too, where
// gaps add to the score and a path continues whatever an earlier one left behind.
PathStore rolling_rows(const Problem& problem, const CellModel& cells, int32_t threshold) {
  const int32_t last_i = problem.qlen() - 2, last_j = problem.dlen() - 2;
  const bool gap_first = problem.flagged();
  PathStore store;
  empty_store(store, problem.qlen());
  std::vector<PathRec> prev(problem.query.size()), cur;
  for (int32_t i = 0; i < problem.qlen(); ++i) prev[static_cast<std::size_t>(i)] = {i, 1, i, 1, 0, 0};
  cur = prev;
  const auto close = [&](const PathRec& record) {
    if (record.best < threshold || record.start_i < 1 || record.start_i == record.end_i ||
        record.start_j == record.end_j) {
      return;
    }
    if (present(record, store.slots[static_cast<std::size_t>(record.start_i)]) == 0) addsco(record, store);
  };
  for (int32_t j = 1; j <= last_j; ++j) {
    for (int32_t i = 1; i <= last_i; ++i) {
      const Cell& cell = cells.at(i, j);
      const auto at = static_cast<std::size_t>(i);
      PathRec& record = cur[at];
      const PathRec& corner = prev[at - 1];
      const PathRec* from = &cur[at - 1];
      if ((cell.flags & MOVE_DIAGONAL) && !(gap_first && (cell.flags & (MOVE_UP | MOVE_LEFT)))) {
        from = &corner;
      } else if (cell.flags & MOVE_UP) {
        from = &prev[at];
      }
      if (cell.value > 0) {
        const bool takes_tie = from != &cur[at - 1] || !gap_first;
        const PathRec source = *from;
        if (from == &corner && corner.score == 0) {
          record = {i, j, i, j, cell.value, record.score};
        } else if (cell.value > source.best || (takes_tie && cell.value == source.best)) {
          record = {source.start_i, source.start_j, i, j, cell.value, record.score};
        } else {
          record = source;
        }
      }
      if (i == last_i || j == last_j) {
        close(record);
      } else if (cell.value == 0 && corner.best > 0) {
        close(corner);
        record.best = 0;
      }
      record.score = cell.value;
    }
    std::swap(prev, cur);
    for (PathRec& record : cur) {
      record.start_i = record.end_i;
      record.start_j = record.end_j;
    }
  }
  return store;
}

// Few of them, or hardly a cell falls to 0.
void make_penalties_negative(Random& random, Problem& problem, int32_t positions) {
  for (int32_t i = 0; i < positions; ++i) {
    problem.extend_row()[i] = uniform(random, 0, 3) == 0 ? -1 : uniform(random, 0, 5);
    problem.open_row()[i] = uniform(random, 0, 3) == 0 ? -1 : uniform(random, 0, 8);
  }
}

// The value reached by replaying an alignment's columns under the flag rule; the flags are the model's.
int32_t replayed(Problem& problem, const CellModel& cells, const PathRec& path, const AlignedRows& rows) {
  const int8_t gap = residue_code(problem.matrix, ' ');
  int32_t i = path.start_i - 1, j = path.start_j - 1, value = 0;
  for (int32_t k = 0; k < rows.length; ++k) {
    const auto at = static_cast<std::size_t>(k);
    const uint8_t from = cells.at(i, j).flags;
    const bool in_query = rows.query[at] != gap, in_target = rows.target[at] != gap;
    if (!in_query) value -= problem.gap_row((from & MOVE_UP) == 0)[i - 1];
    if (!in_target) value -= problem.gap_row((from & MOVE_LEFT) == 0)[i];
    if (in_query && in_target) value += problem.matrix.pairscore[rows.query[at]][rows.target[at]];
    i += in_query ? 1 : 0;
    j += in_target ? 1 : 0;
    EXPECT_TRUE(!in_query || rows.query[at] == problem.query[static_cast<std::size_t>(i)]);
    EXPECT_TRUE(!in_target || rows.target[at] == problem.target[static_cast<std::size_t>(j)]);
  }
  EXPECT_EQ(i, path.end_i);
  EXPECT_EQ(j, path.end_j);
  return value;
}

void expect_flags(const MoveFlags& flags, const CellModel& cells) {
  for (int32_t j = 0; j < flags.rows - 1; ++j) {
    for (int32_t i = 0; i < flags.cols - 1; ++i) {
      const Cell& cell = cells.at(i, j);
      const int32_t zero = i > 0 && j > 0 && cell.value == 0 ? CELL_ZERO : 0;
      ASSERT_EQ(flags[j][i], cell.flags | zero) << i << "," << j;
    }
  }
}

}  // namespace

// Low thresholds keep many paths; those just below the best score leave out most rows.
TEST(Traceback, FindsAndTracesThePathsOfTheModel) {
  Random random(5);
  MoveFlags reused;
  AlignedRows rows;
  int32_t kept = 0;
  for (int32_t round = 0; round < 12000; ++round) {
    SCOPED_TRACE(round);
    Problem problem = random_problem(random, MODES[round % 4], round % 3 == 0 ? 40 : 14);
    // With negative penalties a gap raises the score, and scan and traceback agree only where the last query
    // position, whose value the scan does not carry from row to row, pays for its gaps.
    const bool negative = round % 4 >= 2 && round >= 4000, last_pays = !negative || round >= 10000;
    if (negative) make_penalties_negative(random, problem, problem.qlen() - (last_pays ? 3 : 0));
    const int32_t score = problem.scan_score();
    const int32_t threshold = round % 8 < 4 ? uniform(random, -1, 8) : score - uniform(random, 0, 6);
    const CellModel cells(problem);
    Aligned aligned = align(problem, threshold);
    ASSERT_TRUE(!last_pays || aligned.best == score);
    expect_flags(aligned.flags, cells);
    const PathStore expected = rolling_rows(problem, cells, threshold);
    for (std::size_t s = 0; s < problem.query.size(); ++s) {
      ASSERT_EQ(texts(aligned.store.slots[s]), texts(expected.slots[s])) << "start " << s;
    }
    kept += aligned.store.total;

    const UTvector<PathRec> paths = dosort(aligned.store);
    for (const PathRec& path : paths) {
      if (negative) break;  // a trace can begin before its path
      trace_path(problem.query.data(), problem.target.data(), path, aligned.flags, rows, problem.matrix,
                 &problem.p);
      ASSERT_EQ(rows.query.size(), static_cast<std::size_t>(rows.length) + 1);
      EXPECT_EQ(rows.query.back() + rows.target.back(), 0);
      ASSERT_EQ(replayed(problem, cells, path, rows), path.best);
    }
    const auto by_mode = [&] {
      return align_pair(problem.query.data(), problem.qlen(), problem.target.data(), problem.dlen(),
                        problem.table, reused, problem.matrix, &problem.p);
    };
    problem.p.MIN_SCORE = threshold;
    ASSERT_EQ(texts(by_mode()), texts(paths));
    problem.p.MODE = 77;
    ASSERT_TRUE(by_mode().empty());
  }
  EXPECT_GT(kept, 20000);
}

// Every set on lengths around the rows and lanes that are worked out side by side.
TEST(MoveFlags, AreTheSameFromEveryInstructionSet) {
  Random random(12);
  for (const InstructionSet set : {InstructionSet::PORTABLE, InstructionSet::AVX2, InstructionSet::AVX512}) {
    if (!is_usable(set)) continue;
    for (int32_t round = 0; round < 1000; ++round) {
      Problem problem = random_problem(random, MODES[round % 4], 70);
      const GapRows gaps = {problem.extend_row(), problem.gap_row(true)};
      const int32_t threshold = problem.scan_score() - 2;
      MoveFlags expected = uchararr(problem.dlen(), problem.qlen()), flags = expected;
      const auto sweep = [&](InstructionSet by, MoveFlags& out_flags) {
        return fill_flags(problem.qlen(), problem.target.data(), problem.dlen(), problem.table, gaps,
                          threshold, by, out_flags);
      };
      const FlagSweep reference = sweep(InstructionSet::REFERENCE, expected), found = sweep(set, flags);
      ASSERT_EQ(flags.cells, expected.cells) << instruction_set_name(set) << " round " << round;
      EXPECT_EQ(found.best, reference.best);
      EXPECT_LE(found.first_row, reference.first_row);
      EXPECT_GE(found.last_row, reference.last_row);
    }
  }
}

TEST(PathStore, KeepsTheFirstOfTheBestPathsFromOneStart) {
  UTvector<PathRec> slot = {{2, 7, 10, 10, 50, 50}};
  EXPECT_EQ(present({2, 8, 11, 11, 60, 60}, slot), 0);
  EXPECT_EQ(present({2, 7, 13, 13, 50, 50}, slot), 1);
  EXPECT_EQ(texts(slot), Texts{"(2,7)-(10,10) 50"});
  EXPECT_EQ(present({2, 7, 14, 14, 51, 51}, slot), 1);
  EXPECT_EQ(texts(slot), Texts{"(2,7)-(14,14) 51"});
}

// The order of equals was worked out by hand from the heap procedure.
TEST(PathStore, OrdersEqualPathsAsTheHeapSortLeavesThem) {
  const std::pair<std::vector<int32_t>, std::vector<int32_t>> bests_and_orders[] = {
      {{}, {}},
      {{5}, {0}},
      {{5, 5, 5, 5}, {1, 2, 3, 0}},
      {{5, 7, 5}, {1, 2, 0}},
      {{7, 5, 5, 9}, {3, 0, 2, 1}}};
  for (const auto& [bests, expected] : bests_and_orders) {
    PathStore store;
    store.slots.resize(2);
    for (const int32_t best : bests) addsco({1, store.total, 9, 9, best, 0}, store);
    std::vector<int32_t> order;
    for (const PathRec& path : dosort(store)) order.push_back(path.start_j);
    EXPECT_EQ(order, expected);
  }
}
