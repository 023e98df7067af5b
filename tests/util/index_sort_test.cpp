#include "util/index_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

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

TEST(IndexSorts, TheBestFewStandAsInTheWholeOrder) {
  std::mt19937 random(4);
  for (int32_t n = 0; n < 200; ++n) {
    UTvector<uint32_t> key(static_cast<std::size_t>(n));
    for (uint32_t& value : key) value = static_cast<uint32_t>(random() % (1 + random() % 40));
    const auto less = [&](int32_t a, int32_t b) {
      return key[static_cast<std::size_t>(a)] < key[static_cast<std::size_t>(b)];
    };
    const UTvector<int32_t> whole = UTsorted_order(n, less);
    EXPECT_EQ(
        UTorder_of_keys(n, [&](int32_t k) { return static_cast<int32_t>(key[static_cast<std::size_t>(k)]); }),
        whole);
    for (const int32_t wanted : {0, 1, n / 3, n - 1, n, n + 5}) {
      UTvector<int32_t> part = UTsorted_order(n, less, wanted);
      const auto ordered = std::clamp(wanted, 0, n);
      EXPECT_TRUE(std::equal(whole.end() - ordered, whole.end(), part.end() - ordered)) << n << ' ' << wanted;
      EXPECT_TRUE(std::is_permutation(whole.begin(), whole.end(), part.begin()));
    }
  }
}

}  // namespace
}  // namespace zelvan
