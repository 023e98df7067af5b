#include "util/index_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

namespace {

using Order = std::vector<int32_t>;

// The order of keys that count from 0; entry 0 of what the routines see is not theirs.
Order sorted(const std::vector<int32_t>& keys) {
  const auto n = static_cast<int32_t>(keys.size());
  std::vector<int32_t> integers(1, -1);
  std::vector<double> doubles(1, std::numeric_limits<double>::quiet_NaN());
  for (const int32_t key : keys) {
    integers.push_back(key);
    doubles.push_back(key / 8.0);
  }
  Order index(keys.size() + 1, -7);
  Order index_of_doubles = index;
  UTindexx(integers.data(), n, index.data());
  UTindexxD(doubles.data(), n, index_of_doubles.data());
  EXPECT_EQ(index[0], -7);
  EXPECT_EQ(index_of_doubles, index);
  index.erase(index.begin());
  return index;
}

// Equal keys come in the order that the heap leaves: worked out step by step by hand.
TEST(IndexSort, LeavesTiesAsTheHeapDoes) {
  const std::pair<std::vector<int32_t>, Order> cases[] = {{{}, {}},
                                                          {{5}, {1}},
                                                          {{5, 5}, {2, 1}},
                                                          {{5, 5, 5, 4}, {4, 3, 2, 1}},
                                                          {{5, 5, 5, 5}, {2, 3, 4, 1}},
                                                          {{1, 2, 1, 2}, {1, 3, 4, 2}}};
  for (const auto& [keys, order] : cases) EXPECT_EQ(sorted(keys), order);
}

TEST(IndexSort, OrdersRandomKeys) {
  std::mt19937 random(7);
  for (const int32_t n : {1, 2, 3, 7, 8, 9, 100, 4097}) {
    std::vector<int32_t> keys(static_cast<std::size_t>(n));
    for (int32_t& key : keys) key = static_cast<int32_t>(random() % static_cast<uint32_t>(n)) - n / 2;
    Order order = sorted(keys);
    const auto key_of = [&](int32_t k) { return keys[static_cast<std::size_t>(k) - 1]; };
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end(),
                               [&](int32_t a, int32_t b) { return key_of(a) < key_of(b); }));
    std::sort(order.begin(), order.end());
    for (std::size_t k = 0; k < order.size(); ++k) EXPECT_EQ(order[k], static_cast<int32_t>(k) + 1);
  }
}

}  // namespace
