#include "stats/range_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "stats/numerics/allocators.h"

namespace {

// A table whose bin 60 holds the counts of the scores 0..149.
ScoreTable table_of(const std::vector<int32_t>& counts) {
  ScoreTable table;
  table.nbuckets = 150;
  table.counts.assign(150 * LPL_BINS, 0);
  std::copy(counts.begin(), counts.end(), table.counts.begin() + 60 * 150);
  return table;
}

RangeFit fitted(const std::vector<int32_t>& counts, int expected_status = 0) {
  LplRange range{60, 60, 0, 0};
  for (const int32_t count : counts) range.count += count;
  RangeFit fit;
  const FrequencyTable frequencies = range_frequencies(table_of(counts), range, fit);
  EXPECT_EQ(fit_range(frequencies, fit), expected_status);
  return fit;
}

// A thousand extreme-value distributed scores, truncated.
std::vector<int32_t> sample(double u, double beta, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> uniform(1e-15, 1.0);
  std::vector<int32_t> counts(150);
  for (int i = 0; i < 1000; ++i) {
    const double score = u - beta * std::log(-std::log(uniform(random)));
    ++counts[static_cast<std::size_t>(std::clamp(score, 0.0, 149.0))];
  }
  return counts;
}

TEST(RangeFit, RecoversLocationAndScaleWithinTheirErrors) {
  for (const double beta : {2.0, 4.3, 9.0}) {
    double u_sum = 0, beta_sum = 0;
    for (unsigned seed = 1; seed <= 20; ++seed) {
      const RangeFit fit = fitted(sample(40, beta, seed));
      EXPECT_NEAR(fit.u, 40, 5 * 1.1 * beta / std::sqrt(1000.0));
      EXPECT_NEAR(fit.beta, beta, 5 * 0.9 * beta / std::sqrt(1000.0));
      u_sum += fit.u / 20;
      beta_sum += fit.beta / 20;
    }
    EXPECT_NEAR(u_sum, 40, 0.03 * beta) << "no bias from the truncation of scores";
    EXPECT_NEAR(beta_sum / beta, 1, 0.02);
  }
}

TEST(RangeFit, ExactFrequenciesGiveTheExactCurve) {
  std::vector<int32_t> counts;
  for (int s = 0; s < 150; ++s) {
    const double z = (s + 0.5 - 35) / 5;
    counts.push_back(static_cast<int32_t>(std::lround(1e7 * std::exp(-z - std::exp(-z)) / 5)));
  }
  const RangeFit fit = fitted(counts);
  EXPECT_NEAR(fit.u, 35, 1e-4);
  EXPECT_NEAR(fit.beta, 5, 1e-4);
}

TEST(RangeFit, AFewRelatedSequencesPullLittle) {
  std::vector<int32_t> counts = sample(40, 4.3, 5);
  const RangeFit clean = fitted(counts);
  for (std::size_t i = 0; i < 20; ++i) ++counts[80 + 3 * i];
  const RangeFit fit = fitted(counts);
  EXPECT_NEAR(fit.u, clean.u, 0.2);
  EXPECT_NEAR(fit.beta, clean.beta, 0.06 * clean.beta);
}

TEST(RangeFit, ScoresWithoutASpreadAreRefused) {
  std::vector<int32_t> counts(150);
  counts[30] = 500;
  fitted(counts, SINGULAR);
}

}  // namespace
