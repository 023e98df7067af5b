#include "align/scan_reference.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"

namespace {

// The best sum over all local alignments with a fixed cost for every gap position, tried one by one.
int32_t best_from(const Problem& problem, int32_t i, int32_t j) {
  const auto at = [](int32_t k) { return static_cast<std::size_t>(k); };
  const int32_t penalty = problem.p.LD_PEN;
  const bool more_query = i <= problem.qlen() - 2, more_target = j <= problem.dlen() - 2;
  int32_t best = 0;
  if (more_query && more_target) {
    const int32_t pair = problem.matrix.pairscore[problem.query[at(i)]][problem.target[at(j)]];
    best = std::max(best, pair + best_from(problem, i + 1, j + 1));
  }
  if (more_query) best = std::max(best, best_from(problem, i + 1, j) - penalty);
  if (more_target) best = std::max(best, best_from(problem, i, j + 1) - penalty);
  return best;
}

}  // namespace

TEST(ScanReference, LinearKernelFindsTheBestOfAllAlignments) {
  Random random(1);
  for (int32_t round = 0; round < 300; ++round) {
    const Problem problem = random_problem(random, 200, 5);
    int32_t best = 0;
    for (int32_t i = 1; i <= problem.qlen() - 2; ++i) {
      for (int32_t j = 1; j <= problem.dlen() - 2; ++j) best = std::max(best, best_from(problem, i, j));
    }
    ASSERT_EQ(problem.scan_score(), best) << round;
  }
}

TEST(ScanReference, KernelsFollowTheDefinitionCellByCell) {
  Random random(2);
  for (int32_t round = 0; round < 2000; ++round) {
    Problem problem = random_problem(random, MODES[round % 4], 12);
    ASSERT_EQ(problem.scan_score(), CellModel(problem).best()) << round;
  }
}

TEST(ScanReference, SmallCasesByHand) {
  const ScoreMatrix strict = match_or_not("ABCX", 5, -50);
  const struct {
    const char *query, *target;
    int32_t extend, open, flagged, linear;
  } cases[] = {
      {"AB", "AB", 3, 3, 10, 10},
      {"AB", "", 3, 3, -1, -1},
      {"", "AB", 3, 3, -1, -1},
      {"A", "A", 3, 3, 5, 5},
      {"AAA", "BBB", 3, 3, 0, 0},
      // Six matches around a gap of three, in either sequence: 7 + 2 x 1, or 3 x 1.
      {"ABAXXXBAB", "ABABAB", 1, 7, 21, 27},
      {"ABABAB", "ABAXXXBAB", 1, 7, 21, 27},
      // A gap in the target right after one in the query opens again.
      {"AAAXAAA", "AAACAAA", 1, 4, 22, 28},
      {"AXA", "AA", -1, -1, 11, 11},
  };
  for (const auto& c : cases) {
    for (const int32_t mode : MODES) {
      const Problem problem = make_problem(mode, strict, c.query, c.target, c.extend, c.open);
      EXPECT_EQ(problem.scan_score(), problem.flagged() ? c.flagged : c.linear) << c.query << " " << mode;
    }
  }
}

// The diagonal takes cell (1,2) from the gap that runs on from (1,1): the step to (1,3) opens again and gives
// 15 - 6, where a gap of two from (1,1) would have given 20 - 6 - 1.
TEST(ScanReference, AGapThatLostItsCellIsNotContinued) {
  Problem problem = make_problem(202, match_or_not("ABCX", 0, -50), "AA", "BCXA", 1, 6);
  problem.table[1][1] = 20;
  problem.table[2][1] = 15;
  problem.table[0][2] = 30;
  EXPECT_EQ(problem.scan_score(), 15 - 6 + 30);
}

// AB-A over ABXA and ABXA over AB-A: the gap lies at query position 2, or at 3; entries serve the next position.
TEST(ScanReference, PenaltyEntriesServeTheNextPosition) {
  for (const int32_t mode : {210, 212}) {
    for (const int32_t entry : {1, 2}) {
      Problem wide = make_problem(mode, match_or_not("ABCX", 9, -50), "ABA", "ABXA", 4, 4);
      Problem narrow = make_problem(mode, match_or_not("ABCX", 9, -50), "ABXA", "ABA", 4, 4);
      wide.gap_row(true)[entry] = narrow.gap_row(true)[entry] = 1;
      EXPECT_EQ(wide.scan_score(), entry == 1 ? 26 : 23) << mode;
      EXPECT_EQ(narrow.scan_score(), entry == 2 ? 26 : 23) << mode;
    }
  }
}

// Column L is never carried to the next row: a negative penalty there cannot add up.
TEST(ScanReference, NothingIsCarriedPastTheLastQueryPosition) {
  for (const int32_t mode : {210, 212}) {
    Problem problem = make_problem(mode, match_or_not("ABCX", 5, -50), "AB", "ABXXXX", 4, 4);
    problem.extend_row()[1] = problem.open_row()[1] = -3;
    EXPECT_EQ(problem.scan_score(), 10) << mode;
  }
}
