#include "util/index_sort.h"

#include <gtest/gtest.h>

namespace zelvan {
namespace {

// The orders of ties were traced by hand through the heap procedure.
TEST(IndexSorts, LeaveTiesAsTheHeapDoes) {
  using Order = UTvector<int32_t>;
  const struct {
    UTvector<int32_t> key;
    Order expected;
  } cases[] = {{{}, {}},
               {{7}, {0}},
               {{5, 5}, {1, 0}},
               {{5, 5, 5, 5}, {1, 2, 3, 0}},
               {{3, -1, 2}, {1, 2, 0}},
               {{9, 8, 7, 6, 5, 4, 3, 2, 1}, {8, 7, 6, 5, 4, 3, 2, 1, 0}}};
  for (const auto& c : cases) {
    const auto n = static_cast<int32_t>(c.key.size());
    EXPECT_EQ(UTsorted_order(n, [&c](int32_t a, int32_t b) { return c.key[a] < c.key[b]; }), c.expected) << n;

    UTvector<int32_t> key{-100}, index(c.key.size() + 1, -1), expected{-1};  // entry 0 is not touched
    key.insert(key.end(), c.key.begin(), c.key.end());
    for (const int32_t k : c.expected) expected.push_back(k + 1);
    UTindexx(key.data(), n, index.data());
    EXPECT_EQ(index, expected) << n;
    const UTvector<double> real(key.begin(), key.end());
    UTindexxD(real.data(), n, index.data());
    EXPECT_EQ(index, expected) << n;
  }
}

}  // namespace
}  // namespace zelvan
