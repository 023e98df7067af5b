#include "stats/range_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "stats/numerics/allocators.h"

namespace {

const LplRange BIN_60{60, 60, 0, 0};

// A table that holds truncated scores in bin 60, up to score 149.
ScoreTable table_of(const std::vector<double>& scores) {
  ScoreTable table;
  table.nbuckets = 150;
  table.counts.assign(150 * LPL_BINS, 0);
  for (const double s : scores)
    ++table.counts[60 * 150 + static_cast<std::size_t>(std::clamp(s, 0.0, 149.0))];
  return table;
}

RangeFit fitted(const ScoreTable& table, std::size_t n, int expected_status = 0) {
  LplRange range = BIN_60;
  range.count = static_cast<int32_t>(n);
  RangeFit fit;
  const FrequencyTable frequencies = range_frequencies(table, range, fit);
  EXPECT_EQ(fit_range(frequencies, fit), expected_status);
  return fit;
}

std::vector<double> sample(double u, double beta, int n, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> uniform(1e-15, 1.0);
  std::vector<double> scores;
  for (int i = 0; i < n; ++i) scores.push_back(u - beta * std::log(-std::log(uniform(random))));
  return scores;
}

TEST(RangeFit, RecoversLocationAndScaleWithinTheirErrors) {
  for (const double beta : {2.0, 4.3, 9.0}) {
    double u_sum = 0, beta_sum = 0;
    for (unsigned seed = 1; seed <= 20; ++seed) {
      const RangeFit fit = fitted(table_of(sample(40, beta, 1000, seed)), 1000);
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
  ScoreTable table = table_of({});
  int32_t n = 0;
  for (int s = 0; s < 150; ++s) {
    const double z = (s + 0.5 - 35) / 5;
    const auto count = static_cast<int32_t>(std::lround(1e7 * std::exp(-z - std::exp(-z)) / 5));
    table.counts[static_cast<std::size_t>(60 * 150 + s)] = count;
    n += count;
  }
  const RangeFit fit = fitted(table, static_cast<std::size_t>(n));
  EXPECT_NEAR(fit.u, 35, 1e-4);
  EXPECT_NEAR(fit.beta, 5, 1e-4);
}

TEST(RangeFit, AFewRelatedSequencesPullLittle) {
  std::vector<double> scores = sample(40, 4.3, 1000, 5);
  const RangeFit clean = fitted(table_of(scores), scores.size());
  for (int i = 0; i < 20; ++i) scores.push_back(80 + 3 * i);
  const RangeFit fit = fitted(table_of(scores), scores.size());
  EXPECT_NEAR(fit.u, clean.u, 0.2);
  EXPECT_NEAR(fit.beta, clean.beta, 0.06 * clean.beta);
}

TEST(RangeFit, ScoresWithoutASpreadAreRefused) {
  fitted(table_of(std::vector<double>(500, 30.0)), 500, SINGULAR);
}

}  // namespace
