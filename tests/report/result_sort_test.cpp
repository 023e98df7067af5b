#include "report/result_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "report_data.h"

namespace {

using Order = UTvector<int32_t>;

Params sorting(int32_t prob_type) {
  Params p;
  p.DO_SORT = 1;
  p.PROB_TYPE = prob_type;
  return p;
}

// The tie orders were traced by hand through the heap procedure.
TEST(ZsSort, OrdersTiesAsTheHeapLeavesThem) {
  const struct {
    UTvector<int32_t> key;
    Order expected;
  } cases[] = {
      {{}, {}},
      {{7}, {0}},
      {{5, 5}, {1, 0}},
      {{5, 5, 5}, {1, 2, 0}},
      {{5, 5, 5, 5}, {1, 2, 3, 0}},
      {{2, 1, 2}, {1, 2, 0}},
      {{3, -1, 2}, {1, 2, 0}},
  };
  for (const auto& c : cases) {
    const auto n = static_cast<int32_t>(c.key.size());
    const Params p = sorting(2);  // PROB_TYPE must not matter here
    EXPECT_EQ(do_zs_sort(c.key.data(), n, &p), c.expected) << n;
    const UTvector<double> real(c.key.begin(), c.key.end());
    const Params ascending = sorting(0);
    EXPECT_EQ(do_pv_sort(real.data(), n, &ascending), c.expected) << n;
  }
}

TEST(PvSort, IsAMonotonePermutationReversedForProbType2) {
  std::mt19937 random(7);
  for (int32_t n : {2, 3, 10, 1000}) {
    UTvector<double> key(static_cast<std::size_t>(n));
    for (double& value : key) value = static_cast<double>(random() % 50);
    const Params ascending = sorting(1), reversed = sorting(2);
    Order order = do_pv_sort(key.data(), n, &ascending);
    Order backwards = do_pv_sort(key.data(), n, &reversed);
    std::reverse(backwards.begin(), backwards.end());
    EXPECT_EQ(order, backwards);
    const auto at = [&](int32_t k) { return key[static_cast<std::size_t>(k)]; };
    EXPECT_TRUE(
        std::is_sorted(order.begin(), order.end(), [&](int32_t a, int32_t b) { return at(a) < at(b); }));
    std::sort(order.begin(), order.end());
    for (int32_t k = 0; k < n; ++k) ASSERT_EQ(order[static_cast<std::size_t>(k)], k);
  }
}

TEST(PvSort, RanksWhatIsNoNumberLast) {
  const double key[] = {3, std::nan(""), 1, std::nan(""), 2};
  for (int32_t prob_type : {0, 2}) {
    const Params p = sorting(prob_type);
    const Order order = do_pv_sort(key, 5, &p);
    EXPECT_TRUE(std::isnan(key[order[0]]) && std::isnan(key[order[1]]));
    EXPECT_EQ(Order(order.begin() + 2, order.end()), prob_type == 2 ? (Order{0, 4, 2}) : (Order{2, 4, 0}));
  }
}

TEST(Sorts, AreTheIdentityWithoutDoSort) {
  const double key[] = {3, 1, 2};
  const int32_t zscores[] = {3, 1, 2};
  Params p = sorting(0);
  p.DO_SORT = 0;
  EXPECT_EQ(do_zs_sort(zscores, 3, &p), (Order{0, 1, 2}));
  EXPECT_EQ(do_pv_sort(key, 3, &p), (Order{0, 1, 2}));
  p.PROB_TYPE = 2;
  EXPECT_EQ(do_pv_sort(key, 3, &p), (Order{2, 1, 0}));
  EXPECT_EQ(do_pv_sort(key, 1, &p), (Order{0}));
}

TEST(ResultSort, AdjustsTheLimitsOfTheRun) {
  const struct {
    int32_t special, to_threshold, max_nout, expected_max_nout, expected_min_ascore;
  } cases[] = {{0, 0, 20, 5, 300}, {0, 0, 3, 3, 300}, {0, 1, 3, 5, 300}, {1, 1, 20, 20, 900}};
  for (const auto& c : cases) {
    Params p;
    p.SPECIAL = c.special;
    p.NPRINT_TO_THRESHOLD = c.to_threshold;
    p.MAX_NOUT = c.max_nout;
    p.MIN_SCORE = 300;
    p.MIN_ASCORE = 900;
    RunTimes times;
    EXPECT_EQ(do_result_sort(5, times, &p), (Order{0, 1, 2, 3, 4}));
    EXPECT_EQ(p.MAX_NOUT, c.expected_max_nout);
    EXPECT_EQ(p.MIN_ASCORE, c.expected_min_ascore);
    EXPECT_EQ(times[TIME_SORT].empty(), c.special != 0);
  }
}

TEST(ResultSort, TellsTimesAndCrossedThresholds) {
  Params p;
  p.TIME = 6;
  p.VERBOSE = 6;
  p.MIN_SCORE = 300;
  p.MIN_ASCORE = 900;
  RunTimes times;
  const std::string told = written([&](FILE* stream) {
    std_err = stream;
    do_result_sort(0, times, &p);
    std_err = stderr;
  });
  EXPECT_EQ(told.rfind("Sort results list  CPU(P", 0), 0u) << told;
  EXPECT_NE(told.find("\np->MIN_ASCORE 300 p->MIN_SCORE 900\n"), std::string::npos) << told;
}

}  // namespace
