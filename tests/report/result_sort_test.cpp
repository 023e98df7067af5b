#include "report/result_sort.h"

#include <gtest/gtest.h>

#include <cmath>

#include "report/report_data.h"

namespace zelvan {
namespace {

using Order = UTvector<int32_t>;

// Among ties in the order of the heap sort. PROB_TYPE 2 reverses the order of p-values and does not matter to
// z-scores.
TEST(Sorts, AscendUnlessToldOtherwise) {
  const struct {
    const char* sorting;
    UTvector<int32_t> key;
    Order expected;
  } cases[] = {
      {"DO_SORT 1", {}, {}},
      {"DO_SORT 1", {5, 5, 5, 5}, {1, 2, 3, 0}},
      {"DO_SORT 1", {3, -1, 2}, {1, 2, 0}},
      {"DO_SORT 0", {3, 1, 2}, {0, 1, 2}},
  };
  for (const auto& c : cases) {
    const auto n = static_cast<int32_t>(c.key.size());
    const UTvector<double> real(c.key.begin(), c.key.end());
    const Params ascending = params_of(c.sorting + std::string(" PROB_TYPE 0"));
    const Params reversed = params_of(c.sorting + std::string(" PROB_TYPE 2"));
    EXPECT_EQ(do_zs_sort(c.key.data(), n, n, &ascending), c.expected) << n;
    EXPECT_EQ(do_zs_sort(c.key.data(), n, n, &reversed), c.expected) << n;
    EXPECT_EQ(do_pv_sort(real.data(), n, n, &ascending), c.expected) << n;
    EXPECT_EQ(do_pv_sort(real.data(), n, n, &reversed), Order(c.expected.rbegin(), c.expected.rend())) << n;
  }
  const double some_are_nan[] = {3, std::nan(""), 1, std::nan(""), 2};
  const Params ascending = params_of("DO_SORT 1 PROB_TYPE 0"), reversed = params_of("DO_SORT 1 PROB_TYPE 2");
  EXPECT_EQ(do_pv_sort(some_are_nan, 5, 5, &ascending), (Order{1, 3, 2, 4, 0}));
  EXPECT_EQ(do_pv_sort(some_are_nan, 5, 5, &reversed), (Order{1, 3, 0, 4, 2}));
}

TEST(Sorts, RanksBehindTheCutOffAreNotNeeded) {
  const double key[] = {4, 9, 2, 4, 7, 1};
  const double significance[] = {0.3, 0.01, 5, 0.2, 0.4, std::nan("")};  // does not follow the key strictly
  EXPECT_EQ(ranks_within(0.005F, key, significance, 6), 0);
  EXPECT_EQ(ranks_within(0.01F, key, significance, 6), 0) << "single precision lies below";
  EXPECT_EQ(ranks_within(0.02F, key, significance, 6), 1);
  EXPECT_EQ(ranks_within(0.25F, key, significance, 6), 4) << "with the tie and the one between";
  EXPECT_EQ(ranks_within(10, key, significance, 6), 5);
}

TEST(Sorts, ScoreListsOfAllOrOfTheBest) {
  const struct {
    const char* settings;
    int32_t max_nout, min_ascore;
  } cases[] = {{"MAX_NOUT 9", 3, 700},
               {"MAX_NOUT 2", 2, 700},
               {"MAX_NOUT 2 NPRINT_TO_THRESHOLD 1", 3, 700},
               {"MAX_NOUT 9 SPECIAL 1", 9, 0}};
  for (const auto& c : cases) {
    Params p = params_of(std::string("PRECISION 100 MIN_SCORE 7 ") + c.settings);
    RunTimes times;
    EXPECT_EQ(do_result_sort(3, times, &p), (Order{0, 1, 2}));
    EXPECT_EQ(p.MAX_NOUT, c.max_nout) << c.settings;
    EXPECT_EQ(p.MIN_ASCORE, c.min_ascore) << c.settings;
  }
}

}  // namespace
}  // namespace zelvan
