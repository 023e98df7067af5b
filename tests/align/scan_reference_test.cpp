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
      {"AB", "", 3, 3, -1, -1},
      {"", "AB", 3, 3, -1, -1},
      {"AAA", "BBB", 3, 3, 0, 0},
      // Six matches around a gap of three: 7 + 2 x 1, or 3 x 1.
      {"ABAXXXBAB", "ABABAB", 1, 7, 21, 27},
      // A gap in the target right after one in the query opens again.
      {"AAAXAAA", "AAACAAA", 1, 4, 22, 28},
  };
  for (const auto& c : cases) {
    for (const int32_t mode : MODES) {
      const Problem problem = make_problem(mode, strict, c.query, c.target, c.extend, c.open);
      EXPECT_EQ(problem.scan_score(), problem.flagged() ? c.flagged : c.linear) << c.query << " " << mode;
    }
  }
}
