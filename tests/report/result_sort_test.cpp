#include "report/result_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "report/report_data.h"

namespace {

using Order = UTvector<int32_t>;

Params sorting(int32_t do_sort, int32_t prob_type) {
  Params p;
  p.DO_SORT = do_sort;
  p.PROB_TYPE = prob_type;
  return p;
}

// The orders of ties were traced by hand through the heap procedure. PROB_TYPE 2 reverses the order of p-values
// and does not matter to z-scores.
TEST(Sorts, OrderTiesAsTheHeapLeavesThem) {
  const struct {
    int32_t do_sort;
    UTvector<int32_t> key;
    Order expected;
  } cases[] = {
      {1, {}, {}},
      {1, {7}, {0}},
      {1, {5, 5}, {1, 0}},
      {1, {5, 5, 5}, {1, 2, 0}},
      {1, {5, 5, 5, 5}, {1, 2, 3, 0}},
      {1, {2, 1, 2}, {1, 2, 0}},
      {1, {3, -1, 2}, {1, 2, 0}},
      {0, {3, 1, 2}, {0, 1, 2}},
  };
  for (const auto& c : cases) {
    const auto n = static_cast<int32_t>(c.key.size());
    const UTvector<double> real(c.key.begin(), c.key.end());
    const Params ascending = sorting(c.do_sort, 0), reversed = sorting(c.do_sort, 2);
    EXPECT_EQ(do_zs_sort(c.key.data(), n, &ascending), c.expected) << n;
    EXPECT_EQ(do_zs_sort(c.key.data(), n, &reversed), c.expected) << n;
    EXPECT_EQ(do_pv_sort(real.data(), n, &ascending), c.expected) << n;
    EXPECT_EQ(do_pv_sort(real.data(), n, &reversed), Order(c.expected.rbegin(), c.expected.rend())) << n;
  }
}

TEST(PvSort, IsAMonotonePermutation) {
  Random random(7);
  for (const std::size_t n : {2, 3, 10, 1000}) {
    UTvector<double> key(n);
    for (double& value : key) value = uniform(random, 0, 49);
    const Params p = sorting(1, 1);
    Order order = do_pv_sort(key.data(), static_cast<int32_t>(n), &p);
    const auto at = [&](int32_t k) { return key[static_cast<std::size_t>(k)]; };
    EXPECT_TRUE(
        std::is_sorted(order.begin(), order.end(), [&](int32_t a, int32_t b) { return at(a) < at(b); }));
    std::sort(order.begin(), order.end());
    for (std::size_t k = 0; k < n; ++k) ASSERT_EQ(order[k], static_cast<int32_t>(k));
  }
}

TEST(PvSort, RanksWhatIsNoNumberLast) {
  const double key[] = {3, std::nan(""), 1, std::nan(""), 2};
  for (const int32_t prob_type : {0, 2}) {
    const Params p = sorting(1, prob_type);
    const Order order = do_pv_sort(key, 5, &p);
    EXPECT_TRUE(std::isnan(key[order[0]]) && std::isnan(key[order[1]]));
    EXPECT_EQ(Order(order.begin() + 2, order.end()), prob_type == 2 ? (Order{0, 4, 2}) : (Order{2, 4, 0}));
  }
}

TEST(ResultSort, AdjustsTheLimitsOfTheRun) {
  const struct {
    int32_t special, to_threshold, max_nout, expected_max_nout, expected_min_ascore;
  } cases[] = {{0, 0, 20, 5, 300}, {0, 0, 3, 3, 300}, {0, 1, 3, 5, 300}, {1, 1, 20, 20, 900}};
  for (const auto& c : cases) {
    Params p;
    p.TIME = p.VERBOSE = 6;
    p.SPECIAL = c.special;
    p.NPRINT_TO_THRESHOLD = c.to_threshold;
    p.MAX_NOUT = c.max_nout;
    p.MIN_SCORE = 300;
    p.MIN_ASCORE = 900;
    RunTimes times;
    Order order;
    const std::string told = reported([&] { order = do_result_sort(5, times, &p); });
    EXPECT_EQ(order, (Order{0, 1, 2, 3, 4}));
    EXPECT_EQ(p.MAX_NOUT, c.expected_max_nout);
    EXPECT_EQ(p.MIN_ASCORE, c.expected_min_ascore);
    EXPECT_EQ(times[TIME_SORT].empty(), c.special != 0);
    EXPECT_EQ(count_of(told, "Sort results list  CPU(P"), 1 - c.special);
    EXPECT_EQ(count_of(told, "\np->MIN_ASCORE 300 p->MIN_SCORE 900\n"), 1 - c.special) << told;
  }
}

}  // namespace
