#include "align/traceback.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"
#include "util/streams.h"

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

UTvector<PathRec> paths_of(const Problem& problem, int32_t threshold) {
  Aligned aligned = align(problem, threshold);
  return dosort(aligned.store);
}

bool same_path(const PathRec& a, const PathRec& b) {
  return a.start_i == b.start_i && a.start_j == b.start_j && a.end_i == b.end_i && a.end_j == b.end_j &&
         a.best == b.best;
}

std::string text(const PathRec& path) {
  return "(" + std::to_string(path.start_i) + "," + std::to_string(path.start_j) + ")-(" +
         std::to_string(path.end_i) + "," + std::to_string(path.end_j) + ") " + std::to_string(path.best);
}

using Texts = std::vector<std::string>;
Texts texts(const UTvector<PathRec>& paths) {
  Texts all;
  for (const PathRec& path : paths) all.push_back(text(path));
  return all;
}

template <class Slots>
void expect_same_slots(const UTvector<UTvector<PathRec>>& slots, const Slots& expected) {
  ASSERT_EQ(slots.size(), expected.size());
  for (std::size_t s = 0; s < slots.size(); ++s) {
    ASSERT_EQ(slots[s].size(), expected[s].size()) << "slot " << s;
    for (std::size_t k = 0; k < slots[s].size(); ++k) EXPECT_EQ(text(slots[s][k]), text(expected[s][k]));
  }
}

// The paths that should be kept, worked out from the finished matrix: every cell is followed back, by the move
// that the aligner prefers, to where its path starts.
class PathModel {
 public:
  PathModel(Problem& problem, int32_t threshold)
      : cells_(problem),
        flagged_(problem.flagged()),
        last_i_(problem.qlen() - 2),
        last_j_(problem.dlen() - 2),
        slots_(problem.query.size()) {
    for (int32_t j = 1; j <= last_j_; ++j) {
      for (int32_t i = 1; i <= last_i_; ++i) {
        if (i == last_i_ || j == last_j_) {
          close(i, j, threshold);
        } else if (cells_.at(i, j).value == 0) {
          close(i - 1, j - 1, threshold);
        }
      }
    }
  }
  const std::vector<std::vector<PathRec>>& slots() const { return slots_; }

 private:
  PathRec path_of(int32_t i, int32_t j) const {
    const Cell& cell = cells_.at(i, j);
    const bool diagonal = cell.flags & MOVE_DIAGONAL, up = cell.flags & MOVE_UP;
    const bool left = cell.flags & MOVE_LEFT;
    PathRec path;
    bool takes_tie = true;
    if (flagged_ ? diagonal && !up && !left : diagonal) {
      if (cells_.at(i - 1, j - 1).value == 0) return {i, j, i, j, cell.value, 0};
      path = path_of(i - 1, j - 1);
    } else if (up) {
      path = path_of(i, j - 1);
    } else {
      path = path_of(i - 1, j);
      takes_tie = !flagged_;
    }
    if (cell.value > path.best || (takes_tie && cell.value == path.best)) {
      path = {path.start_i, path.start_j, i, j, cell.value, 0};
    }
    return path;
  }

  void close(int32_t i, int32_t j, int32_t threshold) {
    if (cells_.at(i, j).value == 0) return;
    const PathRec path = path_of(i, j);
    if (path.best < threshold || path.start_i == path.end_i || path.start_j == path.end_j) return;
    std::vector<PathRec>& slot = slots_[static_cast<std::size_t>(path.start_i)];
    for (PathRec& kept : slot) {
      if (kept.start_j != path.start_j) continue;
      if (path.best > kept.best) kept = path;
      return;
    }
    slot.push_back(path);
  }

  CellModel cells_;
  bool flagged_;
  int32_t last_i_, last_j_;
  std::vector<std::vector<PathRec>> slots_;
};

// The same from two rolling rows of records, which also holds where gaps add to the score and a path continues
// whatever an earlier one left behind.
PathStore rolling_rows(Problem& problem, int32_t threshold) {
  const CellModel cells(problem);
  const int32_t last_i = problem.qlen() - 2, last_j = problem.dlen() - 2;
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
      PathRec& record = cur[static_cast<std::size_t>(i)];
      const PathRec &corner = prev[static_cast<std::size_t>(i - 1)],
                    &above = prev[static_cast<std::size_t>(i)];
      const PathRec& beside = cur[static_cast<std::size_t>(i - 1)];
      const bool gap_first = problem.flagged();
      const PathRec* from = nullptr;
      if ((cell.flags & MOVE_DIAGONAL) && !(gap_first && (cell.flags & (MOVE_UP | MOVE_LEFT)))) {
        from = &corner;
      } else if (cell.flags & MOVE_UP) {
        from = &above;
      } else if (cell.flags & MOVE_LEFT) {
        from = &beside;
      }
      if (cell.value > 0) {
        const bool takes_tie = from != &beside || !gap_first;
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

void make_penalties_negative(Random& random, Problem& problem, int32_t positions) {
  for (int32_t i = 0; i < positions; ++i) {
    // Few of them, or hardly a cell falls to 0.
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
    if (rows.query[at] == gap) {
      value -= problem.gap_row((from & MOVE_UP) == 0)[i - 1];
      EXPECT_EQ(rows.target[at], problem.target[static_cast<std::size_t>(++j)]);
    } else if (rows.target[at] == gap) {
      value -= problem.gap_row((from & MOVE_LEFT) == 0)[i];
      EXPECT_EQ(rows.query[at], problem.query[static_cast<std::size_t>(++i)]);
    } else {
      EXPECT_EQ(rows.query[at], problem.query[static_cast<std::size_t>(++i)]);
      EXPECT_EQ(rows.target[at], problem.target[static_cast<std::size_t>(++j)]);
      value += problem.matrix.pairscore[rows.query[at]][rows.target[at]];
    }
  }
  EXPECT_EQ(i, path.end_i);
  EXPECT_EQ(j, path.end_j);
  return value;
}

constexpr int32_t MODES[] = {200, 202, 210, 212};

}  // namespace

TEST(Traceback, KeepsExactlyThePathsOfTheModel) {
  Random random(5);
  std::size_t kept = 0;
  for (int32_t round = 0; round < 6000; ++round) {
    Problem problem = random_problem(random, MODES[round % 4], round % 3 == 0 ? 40 : 14);
    // Low thresholds keep many paths; those just below the best score leave out most rows.
    const int32_t threshold =
        round % 2 == 0 ? uniform(random, -1, 8) : scan_score(problem) - uniform(random, 0, 6);
    const Aligned aligned = align(problem, threshold);
    expect_same_slots(aligned.store.slots, PathModel(problem, threshold).slots());
    kept += static_cast<std::size_t>(aligned.store.total);
  }
  EXPECT_GT(kept, 10000u);
}

TEST(Traceback, KeepsExactlyThePathsOfRollingRows) {
  Random random(11);
  for (int32_t round = 0; round < 8000; ++round) {
    Problem problem = random_problem(random, MODES[2 + round % 2], 30);
    make_penalties_negative(random, problem, problem.qlen());
    const int32_t threshold = round % 4 < 2 ? uniform(random, -1, 8) : scan_score(problem) - 3;
    expect_same_slots(align(problem, threshold).store.slots, rolling_rows(problem, threshold).slots);
  }
}

TEST(Traceback, AgreesWithScanAndModelInScoreAndFlags) {
  Random random(6);
  for (int32_t round = 0; round < 2000; ++round) {
    Problem problem = random_problem(random, MODES[round % 4], 20);
    const Aligned aligned = align(problem, 1000);
    EXPECT_EQ(aligned.best, scan_score(problem));
    EXPECT_EQ(aligned.store.total, 0);
    const CellModel cells(problem);
    for (int32_t j = 0; j <= problem.dlen() - 2; ++j) {
      for (int32_t i = 0; i <= problem.qlen() - 2; ++i) {
        const Cell& cell = cells.at(i, j);
        const int32_t zero = i > 0 && j > 0 && cell.value == 0 ? CELL_ZERO : 0;
        ASSERT_EQ(aligned.flags[j][i], cell.flags | zero)
            << "mode " << problem.p.MODE << " " << i << "," << j;
      }
    }
  }
}

TEST(Traceback, TracesEveryPathToItsBest) {
  Random random(7);
  AlignedRows rows;
  for (int32_t round = 0; round < 1000; ++round) {
    Problem problem = random_problem(random, MODES[round % 4], 20);
    Aligned aligned = align(problem, 1);
    const CellModel cells(problem);
    int32_t previous = INT32_MAX;
    for (const PathRec& path : dosort(aligned.store)) {
      EXPECT_LE(path.best, previous);
      previous = path.best;
      trace_path(problem.query.data(), problem.target.data(), path, aligned.flags, rows, problem.matrix,
                 &problem.p);
      ASSERT_EQ(rows.query.size(), static_cast<std::size_t>(rows.length) + 1);
      EXPECT_EQ(rows.query.back(), 0);
      EXPECT_EQ(rows.target.back(), 0);
      ASSERT_EQ(replayed(problem, cells, path, rows), path.best) << text(path);
    }
  }
}

// Every set on lengths around the rows and lanes that are worked out side by side.
TEST(MoveFlags, AreTheSameFromEveryInstructionSet) {
  Random random(12);
  for (const InstructionSet set : {InstructionSet::PORTABLE, InstructionSet::AVX2, InstructionSet::AVX512}) {
    if (!is_usable(set)) continue;
    for (int32_t round = 0; round < 1000; ++round) {
      Problem problem = random_problem(random, MODES[round % 4], 70);
      const GapRows gaps = {problem.extend_row(), problem.gap_row(true)};
      const int32_t threshold = scan_score(problem) - 2;
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

// With negative penalties a gap raises the score; scan and traceback still agree where the last query position,
// whose value the scan does not carry from row to row, pays for its gaps.
TEST(Traceback, AgreesWithScanUnderNegativePenalties) {
  Random random(8);
  for (int32_t round = 0; round < 1000; ++round) {
    Problem problem = random_problem(random, round % 2 == 0 ? 210 : 212, 20);
    make_penalties_negative(random, problem, problem.qlen() - 3);
    EXPECT_EQ(align(problem, 1).best, scan_score(problem)) << round;
  }
}

TEST(Traceback, IdenticalSequencesGiveOnePathFromEndToEnd) {
  for (const int32_t mode : MODES) {
    const ScoreMatrix matrix = small_matrix("ABCX", [](int32_t a, int32_t b) { return a == b ? 5 : -4; });
    const Problem problem = make_problem(mode, matrix, "ABCABBCAX", "ABCABBCAX", 3, 6);
    EXPECT_EQ(texts(paths_of(problem, 40)), (Texts{"(1,1)-(9,9) 45"}));
  }
}

// AA against AAA, gaps free of charge: (1,2) and (2,3) are reached by the diagonal and from above. The diagonal
// starts a second path at (1,2); from above both cells belong to the path of (1,1), whose first end stays.
TEST(Traceback, PrefersByScheme) {
  const ScoreMatrix matrix = small_matrix("ABX", [](int32_t a, int32_t b) { return a == b ? 4 : -4; });
  EXPECT_EQ(texts(paths_of(make_problem(200, matrix, "AA", "AAA", 0, 0), 8)),
            (Texts{"(1,2)-(2,3) 8", "(1,1)-(2,2) 8"}));
  EXPECT_EQ(texts(paths_of(make_problem(202, matrix, "AA", "AAA", 0, 0), 8)), (Texts{"(1,1)-(2,2) 8"}));
}

TEST(Traceback, LeftJoinKeepsTheOldEndOnATieOnlyInTheFlaggedScheme) {
  const ScoreMatrix matrix = small_matrix("ABX", [](int32_t a, int32_t b) { return a == b ? 4 : -9; });
  // (3,2) repeats the best of (2,2) from the left, before the path first ends there.
  EXPECT_EQ(texts(paths_of(make_problem(200, matrix, "AAB", "AAX", 0, 0), 8)), (Texts{"(1,1)-(3,2) 8"}));
  EXPECT_EQ(texts(paths_of(make_problem(202, matrix, "AAB", "AAX", 0, 0), 8)), (Texts{"(1,1)-(2,2) 8"}));
  // (2,3) repeats it from above; a gap at position 3 would cost too much.
  for (const int32_t mode : {210, 212}) {
    Problem problem = make_problem(mode, matrix, "AAB", "AAX", 0, 0);
    problem.extend_row()[2] = problem.open_row()[2] = 9;
    EXPECT_EQ(texts(paths_of(problem, 8)), (Texts{"(1,1)-(2,3) 8"}));
  }
}

TEST(Traceback, PathsWithinOnePositionAreNotKept) {
  const ScoreMatrix matrix = small_matrix("ABX", [](int32_t a, int32_t b) { return a == b ? 4 : -4; });
  for (const int32_t mode : {200, 202}) {
    EXPECT_TRUE(paths_of(make_problem(mode, matrix, "A", "BAB", 2, 2), 0).empty());
    EXPECT_TRUE(paths_of(make_problem(mode, matrix, "BAB", "A", 2, 2), 0).empty());
    EXPECT_TRUE(paths_of(make_problem(mode, matrix, "BAB", "XAX", 2, 2), 0).empty());
    EXPECT_TRUE(paths_of(make_problem(mode, matrix, "ABA", "", 2, 2), 0).empty());
    EXPECT_EQ(align(make_problem(mode, matrix, "ABA", "", 2, 2), 0).best, -1);
  }
}

TEST(Traceback, StoreKeepsOnePathPerStart) {
  PathStore store;
  store.slots.resize(4);
  const auto record = [&](int32_t start_i, int32_t start_j, int32_t end, int32_t best) {
    const PathRec path = {start_i, start_j, end, end, best, best};
    UTvector<PathRec>& slot = store.slots[static_cast<std::size_t>(start_i)];
    const int32_t found = present(path, slot);
    if (found == 0) addsco(path, store);
    return found;
  };
  EXPECT_EQ(record(2, 7, 10, 50), 0);
  EXPECT_EQ(record(2, 8, 11, 50), 0);
  EXPECT_EQ(record(1, 7, 12, 40), 0);
  EXPECT_EQ(record(2, 7, 13, 50), 1);  // no better: the first stays
  EXPECT_EQ(record(2, 8, 14, 51), 1);  // better: replaces
  EXPECT_EQ(store.total, 3);
  EXPECT_EQ(texts(dosort(store)), (Texts{"(2,8)-(14,14) 51", "(2,7)-(10,10) 50", "(1,7)-(12,12) 40"}));
}

// The order of equals was worked out by hand from the heap procedure.
TEST(Traceback, OrderOfEqualPathsIsThatOfTheHeapSort) {
  const struct {
    std::vector<int32_t> bests;
    std::vector<int32_t> order;  // of the places before the sort
  } cases[] = {{{}, {}},
               {{5}, {0}},
               {{5, 5}, {1, 0}},
               {{5, 5, 5}, {1, 2, 0}},
               {{5, 5, 5, 5}, {1, 2, 3, 0}},
               {{5, 7, 5}, {1, 2, 0}},
               {{5, 5, 7}, {2, 1, 0}},
               {{7, 5, 5, 9}, {3, 0, 2, 1}}};
  for (const auto& c : cases) {
    PathStore store;
    store.slots.resize(2);
    for (std::size_t k = 0; k < c.bests.size(); ++k) {
      addsco({1, static_cast<int32_t>(k), 9, 9, c.bests[k], 0}, store);
    }
    std::vector<int32_t> order;
    for (const PathRec& path : dosort(store)) order.push_back(path.start_j);
    EXPECT_EQ(order, c.order);
  }
}

TEST(TracebackDeathTest, FaultsEndTheRun) {
  UTinitfile();
  PathStore store;
  store.slots.resize(2);
  store.total = 1;
  EXPECT_EXIT(dosort(store), testing::ExitedWithCode(0), "k != total in dosort: ");
  const Problem problem =
      make_problem(200, small_matrix("ABX", [](int32_t, int32_t) { return 1; }), "AB", "AB", 1, 1);
  const MoveFlags flags = uchararr(problem.dlen(), problem.qlen());
  AlignedRows rows;
  for (auto* tracer : {aliseq, ialiseq}) {
    EXPECT_EXIT(tracer(problem.query.data(), problem.target.data(), {1, 1, 2, 2, 2, 2}, flags, rows,
                       problem.matrix, &problem.p),
                testing::ExitedWithCode(255), "^Disaster in aliseq\n$");
  }
}

TEST(Traceback, PairIsAlignedByModeAndFlagsAreReused) {
  Random random(10);
  MoveFlags flags;
  for (int32_t round = 0; round < 300; ++round) {
    Problem problem = random_problem(random, MODES[round % 4], 25);
    problem.p.MIN_SCORE = 3;
    Aligned fresh = align(problem, 3);
    const UTvector<PathRec> expected = dosort(fresh.store);
    const UTvector<PathRec> paths =
        align_pair(problem.query.data(), problem.qlen(), problem.target.data(), problem.dlen(), problem.table,
                   flags, problem.matrix, &problem.p);
    ASSERT_EQ(paths.size(), expected.size());
    for (std::size_t k = 0; k < paths.size(); ++k) ASSERT_TRUE(same_path(paths[k], expected[k]));
    problem.p.MODE = 77;
    EXPECT_TRUE(align_pair(problem.query.data(), problem.qlen(), problem.target.data(), problem.dlen(),
                           problem.table, flags, problem.matrix, &problem.p)
                    .empty());
  }
}

TEST(Traceback, RevalReversesTheNamedPart) {
  int8_t buffer[] = {1, 2, 3, 4, 5};
  reval(buffer, 1, 3);
  EXPECT_EQ(std::vector<int8_t>(buffer, buffer + 5), (std::vector<int8_t>{1, 4, 3, 2, 5}));
}
