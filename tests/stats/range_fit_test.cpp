#include "stats/range_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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

TEST(RangeFit, ScoresWithoutASpreadAreRefused) {
  std::vector<int32_t> counts(150);
  counts[30] = 500;
  fitted(counts, SINGULAR);
}

}  // namespace
