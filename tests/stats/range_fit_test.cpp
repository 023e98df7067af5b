#include "stats/range_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "stats/numerics/allocators.h"

namespace zelvan {

// Exact frequencies give the exact curve; scores without a spread are refused.
TEST(RangeFit, FollowsTheFrequenciesOfTheRange) {
  ScoreTable table;  // bin 60 holds the counts of the scores 0..149
  table.nbuckets = 150;
  table.counts.assign(150 * LPL_BINS, 0);
  const auto counts = table.counts.begin() + 60 * 150;
  LplRange range{60, 60, 0, 0};
  for (int s = 0; s < 150; ++s) {
    const double z = (s + 0.5 - 35) / 5;
    counts[s] = static_cast<int32_t>(std::lround(1e7 * std::exp(-z - std::exp(-z)) / 5));
    range.count += counts[s];
  }
  RangeFit fit;
  const FrequencyTable frequencies = range_frequencies(table, range, fit);
  for (const double start : {fit.beta, -fit.beta}) {  // a step may lead below 0
    fit.beta = start;
    EXPECT_EQ(fit_range(frequencies, fit), 0) << start;
    EXPECT_NEAR(fit.u, 35, 1e-4) << start;
    EXPECT_NEAR(fit.beta, 5, 1e-4) << start;
  }

  std::fill(counts, counts + 150, 0);
  counts[30] = range.count = 500;
  EXPECT_EQ(fit_range(range_frequencies(table, range, fit), fit), SINGULAR);
}

}  // namespace zelvan
