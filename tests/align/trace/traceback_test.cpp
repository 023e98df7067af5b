#include "align/trace/traceback.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"

namespace zelvan {
namespace {

// The paths that should be found, from the model's cells and two rolling rows of records.
UTvector<PathRec> expected_paths(const Problem& problem, const CellModel& cells) {
  const int32_t last_i = problem.qlen() - 2, last_j = problem.dlen() - 2;
  const bool gap_first = problem.flagged();
  PathStore store;
  empty_store(store, problem.qlen());
  std::vector<PathRec> prev(problem.query.size()), cur;
  for (int32_t i = 0; i < problem.qlen(); ++i) prev[static_cast<std::size_t>(i)] = {i, 1, i, 1, 0, 0};
  cur = prev;
  const auto close = [&](const PathRec& record) {
    if (record.best < problem.p.MIN_SCORE || record.start_i < 1 || record.start_i == record.end_i ||
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
  return dosort(store);
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
  MoveFlags flags;  // of the pair before: nothing of it may be left
  AlignedRows rows;
  std::size_t kept = 0;
  for (int32_t round = 0; round < 12000; ++round) {
    SCOPED_TRACE(round);
    Problem problem = random_problem(random, MODES[round % 4], round % 3 == 0 ? 40 : 14);
    const CellModel cells(problem);
    problem.p.MIN_SCORE = round % 8 < 4 ? uniform(random, -1, 8) : cells.best() - uniform(random, 0, 6);
    const UTvector<PathRec> paths =
        align_pair(record_of(problem.query), record_of(problem.target), problem.table, problem.p.MIN_SCORE,
                   flags, problem.matrix, &problem.p);
    expect_flags(flags, cells);
    ASSERT_EQ(fields(paths), fields(expected_paths(problem, cells)));
    kept += paths.size();
    for (const PathRec& path : paths) {
      trace_path(problem.query.data(), problem.target.data(), path, flags, rows, problem.matrix, &problem.p);
      ASSERT_EQ(rows.query.size(), static_cast<std::size_t>(rows.length) + 1);
      EXPECT_EQ(rows.query.back() + rows.target.back(), 0);
      ASSERT_EQ(replayed(problem, cells, path, rows), path.best);
    }
  }
  EXPECT_GT(kept, 20000U);
}

TEST(PathStore, KeepsTheFirstOfTheBestPathsFromOneStart) {
  UTvector<PathRec> slot = {{2, 7, 10, 10, 50, 50}};
  EXPECT_EQ(present({2, 8, 11, 11, 60, 60}, slot), 0);
  EXPECT_EQ(present({2, 7, 13, 13, 50, 50}, slot), 1);
  EXPECT_EQ(slot[0].end_i, 10);
  EXPECT_EQ(present({2, 7, 14, 14, 51, 51}, slot), 1);
  EXPECT_EQ(slot[0].end_i, 14);
}

// The order of equals was worked out by hand from the heap procedure.
TEST(PathStore, OrdersEqualPathsAsTheHeapSortLeavesThem) {
  using Numbers = std::vector<int32_t>;
  const std::pair<Numbers, Numbers> bests_and_orders[] = {
      {{}, {}}, {{5, 5, 5, 5}, {1, 2, 3, 0}}, {{5, 7, 5}, {1, 2, 0}}, {{7, 5, 5, 9}, {3, 0, 2, 1}}};
  for (const auto& [bests, expected] : bests_and_orders) {
    PathStore store;
    store.slots.resize(2);
    for (const int32_t best : bests) addsco({1, store.total, 9, 9, best, 0}, store);
    Numbers order;
    for (const PathRec& path : dosort(store)) order.push_back(path.start_j);
    EXPECT_EQ(order, expected);
  }
}

}  // namespace zelvan
