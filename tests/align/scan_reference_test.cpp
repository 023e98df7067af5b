#include "align/scan_reference.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"

namespace {

// The best sum over all local alignments with a fixed cost for every gap position, tried one by one.
int32_t best_from(const Problem& problem, int32_t i, int32_t j) {
  const auto at = [](int32_t k) { return static_cast<std::size_t>(k); };
  const int32_t penalty = problem.p.LD_PEN;
  int32_t best = 0;
  if (i <= problem.qlen() - 2 && j <= problem.dlen() - 2) {
    const int32_t pair = problem.matrix.pairscore[problem.query[at(i)]][problem.target[at(j)]];
    best = std::max(best, pair + best_from(problem, i + 1, j + 1));
  }
  if (i <= problem.qlen() - 2) best = std::max(best, best_from(problem, i + 1, j) - penalty);
  if (j <= problem.dlen() - 2) best = std::max(best, best_from(problem, i, j + 1) - penalty);
  return best;
}

int32_t best_of_all_alignments(const Problem& problem) {
  int32_t best = 0;
  for (int32_t i = 1; i <= problem.qlen() - 2; ++i) {
    for (int32_t j = 1; j <= problem.dlen() - 2; ++j) best = std::max(best, best_from(problem, i, j));
  }
  return best;
}

ScoreMatrix match_or_not(int32_t match, int32_t mismatch) {
  return small_matrix("ABCX", [=](int32_t a, int32_t b) { return a == b ? match : mismatch; });
}

int32_t scored(int32_t mode, const ScoreMatrix& matrix, const char* query, const char* target, int32_t extend,
               int32_t open) {
  return scan_score(make_problem(mode, matrix, query, target, extend, open));
}

constexpr int32_t MODES[] = {200, 202, 210, 212};

}  // namespace

TEST(ScanReference, LinearKernelFindsTheBestOfAllAlignments) {
  Random random(1);
  for (int32_t round = 0; round < 300; ++round) {
    const Problem problem = random_problem(random, 200, 5);
    ASSERT_EQ(scan_score(problem), best_of_all_alignments(problem)) << round;
  }
}

TEST(ScanReference, KernelsFollowTheDefinitionCellByCell) {
  Random random(2);
  for (int32_t round = 0; round < 2000; ++round) {
    Problem problem = random_problem(random, MODES[round % 4], 12);
    ASSERT_EQ(scan_score(problem), CellModel(problem).best()) << round;
  }
}

TEST(ScanReference, SmallCasesByHand) {
  const ScoreMatrix matrix = match_or_not(5, -2);
  EXPECT_EQ(scored(200, matrix, "AB", "AB", 3, 3), 10);
  for (const int32_t mode : MODES) {
    EXPECT_EQ(scored(mode, matrix, "AB", "", 3, 3), -1);
    EXPECT_EQ(scored(mode, matrix, "", "AB", 3, 3), -1);
    EXPECT_EQ(scored(mode, matrix, "AAA", "BBB", 3, 3), 0);
  }
  // Six matches around a gap of three: the gap costs 7 + 2 x 1, in either sequence.
  const ScoreMatrix strict = match_or_not(5, -50);
  for (const int32_t mode : {202, 212}) {
    EXPECT_EQ(scored(mode, strict, "ABAXXXBAB", "ABABAB", 1, 7), 21);
    EXPECT_EQ(scored(mode, strict, "ABABAB", "ABAXXXBAB", 1, 7), 21);
  }
  // A gap in the target right after one in the query opens again.
  EXPECT_EQ(scored(202, strict, "AAAXAAA", "AAACAAA", 1, 4), 22);
}

// The diagonal takes cell (1,2) from the gap that runs on from (1,1): the step to (1,3) opens again and gives
// 15 - 6, where a gap of two from (1,1) would have given 20 - 6 - 1.
TEST(ScanReference, AGapThatLostItsCellIsNotContinued) {
  Problem problem = make_problem(202, match_or_not(0, -50), "AA", "BCXA", 1, 6);
  const auto score = [&](char code, int32_t i, int32_t value) {
    problem.table[residue_code(problem.matrix, code)][i] = value;
  };
  score('B', 1, 20);
  score('C', 1, 15);
  score('A', 2, 30);
  EXPECT_EQ(scan_score(problem), 15 - 6 + 30);
}

TEST(ScanReference, EqualPenaltiesMakeTheSchemesAgree) {
  Random random(3);
  for (int32_t round = 0; round < 500; ++round) {
    Problem problem = random_problem(random, 200, 20);
    problem.p.LI_PEN = problem.p.LD_PEN;
    std::copy_n(problem.extend_row(), problem.qlen(), problem.open_row());
    const int32_t linear = scan_score(problem);
    for (const int32_t mode : MODES) {
      problem.p.MODE = mode;
      ASSERT_EQ(scan_score(problem), linear) << mode;
    }
  }
}

TEST(ScanReference, PenaltyEntriesServeTheNextPosition) {
  const ScoreMatrix strict = match_or_not(9, -50);
  for (const int32_t mode : {210, 212}) {
    // AB-A over ABXA and ABXA over AB-A: the gap lies at query position 2, or at 3.
    Problem wide = make_problem(mode, strict, "ABA", "ABXA", 4, 4);
    EXPECT_EQ(scan_score(wide), 23);
    wide.gap_row(true)[1] = 1;
    EXPECT_EQ(scan_score(wide), 26) << "entry 1 is the penalty of position 2";
    Problem narrow = make_problem(mode, strict, "ABXA", "ABA", 4, 4);
    narrow.gap_row(true)[1] = 1;
    EXPECT_EQ(scan_score(narrow), 23);
    narrow.gap_row(true)[2] = 1;
    EXPECT_EQ(scan_score(narrow), 26) << "entry 2 is the penalty of position 3";
  }
}

// Column L is never carried to the next row: a negative penalty there cannot add up.
TEST(ScanReference, NothingIsCarriedPastTheLastQueryPosition) {
  for (const int32_t mode : {210, 212}) {
    Problem problem = make_problem(mode, match_or_not(5, -50), "AB", "ABXXXX", 4, 4);
    problem.extend_row()[1] = problem.open_row()[1] = -3;
    EXPECT_EQ(scan_score(problem), 10) << mode;
  }
}
