#include "align/scan/scan_reference.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"

namespace zelvan {
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
    Problem problem = random_problem(random, 200, 5);
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

}  // namespace zelvan
