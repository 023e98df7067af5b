#include "stats/score_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace zelvan {
namespace {

// The product is formed in 32 bits; what wraps to zero or below has no logarithm.
TEST(ScoreTable, TheProductOfLengthsIsFormedIn32Bits) {
  EXPECT_EQ(log_length_product(300, 250), std::log(75000.0));
  EXPECT_EQ(log_length_product(46340, 46340), std::log(46340.0 * 46340));
  EXPECT_EQ(log_length_product(65536, 65537), std::log(65536.0));
  EXPECT_TRUE(std::isnan(log_length_product(300, 0)));
  EXPECT_TRUE(std::isnan(log_length_product(46341, 46341)));
}

TEST(ScoreTable, TheSummaryIsOfAllScores) {
  const float scores[] = {10.9F, 20, 30, 40.5F};
  const ScoreSummary summary = summarise_scores(scores, 4);
  EXPECT_EQ(summary.lowscore, 10);
  EXPECT_EQ(summary.mean, 25);
  EXPECT_NEAR(summary.sd, std::sqrt(125.0), 1e-12);
  EXPECT_EQ(summary.maxscore, 80);  // 25 + 55.9
  EXPECT_EQ(score_buckets(summary), 71);
  const float huge[] = {0, 2147483648.0F};
  EXPECT_EQ(summarise_scores(huge, 2).maxscore, INT32_MAX);
}

TEST(ScoreTable, CountsByBinAndScoreWhoTakesPart) {
  ScoreSummary summary;
  summary.lowscore = 10;
  summary.maxscore = 14;
  //                lpl 3.99 | 4.007 | 9.903   | 9.985   | too high | no lpl | 19.9999   | 20.0000003
  const int32_t q[] = {1, 1, 100, 100, 100, 100, 1, 1};
  const int32_t d[] = {54, 55, 200, 217, 200, 0, 485165195, 485165196};
  const float s[] = {12, 10.5F, 12, 14.9F, 15, 12, 13, 12};
  const ScoreTable table = count_scores(s, q, d, 8, summary);
  ASSERT_EQ(table.nbuckets, 5);
  std::vector<int32_t> expected(5 * LPL_BINS, 0);
  expected[0] = 1;            // 4.007, score 10
  expected[59 * 5 + 2] = 1;   // 9.903, score 12
  expected[59 * 5 + 4] = 1;   // 9.985, score 14
  expected[159 * 5 + 3] = 1;  // 19.9999, score 13
  EXPECT_TRUE(std::equal(expected.begin(), expected.end(), table.counts.begin(), table.counts.end()));
  EXPECT_EQ(table.bins[59].count, 2);
  EXPECT_EQ(table.bins[59].score_sum, 26);
  EXPECT_NEAR(table.bins[59].tenths_sum, 10 * (std::log(20000.0) + std::log(21700.0)), 1e-9);
}

TEST(ScoreTable, ARangeIsUsableAboveTheLeastNumberOfHits) {
  ScoreTable table;
  table.bins[60] = {2, 2 * 601.0 / 6, 0};
  table.bins[61] = {1, 102, 0};
  table.bins[63] = {3, 312, 0};
  table.bins[159] = {9, 9 * 199.5, 0};
  std::vector<std::vector<int32_t>> ranges;  // first, last, count
  const RangeChoice choice = ranges_of_width(table, 3, 2);
  for (const LplRange& range : choice.ranges) ranges.push_back({range.first, range.last, range.count});
  const decltype(ranges) expected = {{60, 62, 3}, {63, 65, 3}, {159, 159, 9}};
  EXPECT_EQ(ranges, expected) << "the last one is cut off";
  EXPECT_NEAR(choice.ranges[0].tenths, (601.0 / 3 + 102) / 3, 1e-12);
  EXPECT_EQ(ranges_of_width(table, 1, 2).ranges.size(), 2U);
  EXPECT_TRUE(ranges_of_width(ScoreTable(), 1, -1).ranges.empty());  // a range without hits is never usable
}

}  // namespace
}  // namespace zelvan
