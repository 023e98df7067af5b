#include "util/index_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

namespace {

using Order = std::vector<int32_t>;

Order sorted(const std::vector<int32_t>& keys) {  // keys[0] belongs to index 1
  std::vector<int32_t> key(1, -1);
  key.insert(key.end(), keys.begin(), keys.end());
  Order index(key.size(), -7);
  UTindexx(key.data(), static_cast<int32_t>(keys.size()), index.data());
  EXPECT_EQ(index[0], -7) << "entry 0 is not ours";
  return Order(index.begin() + 1, index.end());
}

Order sorted_as_doubles(const std::vector<int32_t>& keys) {
  std::vector<double> key(1, std::numeric_limits<double>::quiet_NaN());
  for (int32_t k : keys) key.push_back(k / 8.0);
  Order index(key.size(), -7);
  UTindexxD(key.data(), static_cast<int32_t>(keys.size()), index.data());
  return Order(index.begin() + 1, index.end());
}

// Equal keys come in the order that the heap leaves: worked out step by step by hand.
TEST(IndexSort, LeavesTiesAsTheHeapDoes) {
  const struct {
    std::vector<int32_t> keys;
    Order order;
  } cases[] = {
      {{}, {}},
      {{5}, {1}},
      {{5, 5}, {2, 1}},
      {{5, 4}, {2, 1}},
      {{4, 5}, {1, 2}},
      {{5, 5, 5}, {2, 3, 1}},
      {{5, 5, 5, 5}, {2, 3, 4, 1}},
      {{1, 2, 1, 2}, {1, 3, 4, 2}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(sorted(c.keys), c.order);
    EXPECT_EQ(sorted_as_doubles(c.keys), c.order);
  }
}

TEST(IndexSort, OrdersRandomKeys) {
  std::mt19937 random(7);
  for (int32_t n : {1, 2, 3, 7, 8, 9, 100, 4097}) {
    std::vector<int32_t> keys(static_cast<std::size_t>(n));
    for (int32_t& key : keys) key = static_cast<int32_t>(random() % static_cast<uint32_t>(n)) - n / 2;
    const Order order = sorted(keys);
    for (std::size_t k = 1; k < order.size(); ++k) {
      EXPECT_LE(keys[static_cast<std::size_t>(order[k - 1] - 1)],
                keys[static_cast<std::size_t>(order[k] - 1)]);
    }
    EXPECT_EQ(sorted_as_doubles(keys), order);
    Order all(order);
    std::sort(all.begin(), all.end());
    for (std::size_t k = 0; k < all.size(); ++k) EXPECT_EQ(all[k], static_cast<int32_t>(k) + 1);
  }
}

}  // namespace
