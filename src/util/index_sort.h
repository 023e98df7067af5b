// Index sorts. The order of equal keys is visible in score lists and database files, so the published heap
// sort is followed step for step.
#pragma once

#include <cstdint>

#include "util/memory.h"

namespace zelvan {

// UTheap_order - puts n entries of any kind into ascending order, counted from 1.
// In     n >= 0; less(a, b): whether entry a is below entry b
// In/Out entry[1..n]; entry 0 is never touched
// Does   the heap gives up its entries from the largest down, so that one who wants the best few need not pay
//        for the others: with `wanted` below n only the last `wanted` entries are in order, and the others
//        stand in any
// Exact  ties in the order that the heap procedure leaves
// Source Numerical Recipes, indexx (heap-sort form)
template <class Entry, class Less>
void UTheap_order(Entry* entry, int32_t n, int32_t wanted, Less less) {
  if (n < 2) return;
  int32_t l = n / 2 + 1;
  int32_t ir = n;
  for (;;) {
    Entry held;
    if (l > 1) {
      held = entry[--l];
    } else {
      if (n - ir >= wanted) return;
      held = entry[ir];
      entry[ir] = entry[1];
      if (--ir == 1) {
        entry[1] = held;
        return;
      }
    }
    int32_t i = l;
    for (int64_t j = 2 * static_cast<int64_t>(l); j <= ir;) {
      if (j < ir && less(entry[j], entry[j + 1])) ++j;
      if (!less(held, entry[j])) break;
      entry[i] = entry[j];
      i = static_cast<int32_t>(j);
      j *= 2;
    }
    entry[i] = held;
  }
}

// UTindexx_by - the ascending order of n keys of any kind, counted from 1.
// In     n >= 0; less(a, b), a and b = 1..n: whether key a is below key b
// Out    out_index[1..n]: a permutation of 1..n, the smallest key first, as UTheap_order leaves it; entry 0
//        is never touched
template <class Less>
void UTindexx_by(Less less, int32_t n, int32_t* out_index, int32_t wanted) {
  for (int32_t j = 1; j <= n; ++j) out_index[j] = j;
  UTheap_order(out_index, n, wanted, less);
}
template <class Less>
void UTindexx_by(Less less, int32_t n, int32_t* out_index) {
  UTindexx_by(less, n, out_index, n);
}

// UTorder_of_keys - UTsorted_order by integer keys that are handed over one by one and stand beside their
// numbers while they are sorted: of millions it takes a third of the time.
// In     key(k), k = 0..n-1
template <class KeyOf>
UTvector<int32_t> UTorder_of_keys(int32_t n, KeyOf key) {
  struct Entry {
    int32_t key;
    int32_t number;
  };
  UTvector<Entry> entries(static_cast<std::size_t>(n) + 1);
  for (int32_t k = 0; k < n; ++k) entries[static_cast<std::size_t>(k) + 1] = {key(k), k};
  UTheap_order(entries.data(), n, n, [](const Entry& a, const Entry& b) { return a.key < b.key; });
  UTvector<int32_t> order(static_cast<std::size_t>(n));
  for (int32_t k = 0; k < n; ++k) {
    order[static_cast<std::size_t>(k)] = entries[static_cast<std::size_t>(k) + 1].number;
  }
  return order;
}

// UTsorted_order - the same counted from 0, which is what callers use.
// In     n >= 0; less(a, b), a and b = 0..n-1: whether key a is below key b
// Returns the numbers 0..n-1 by ascending key, with `wanted` below n only the last so many of them
template <class Less>
UTvector<int32_t> UTsorted_order(int32_t n, Less less, int32_t wanted) {
  UTvector<int32_t> order(static_cast<std::size_t>(n) + 1);
  UTindexx_by([&less](int32_t a, int32_t b) { return less(a - 1, b - 1); }, n, order.data(), wanted);
  order.erase(order.begin());
  for (int32_t& number : order) --number;
  return order;
}
template <class Less>
UTvector<int32_t> UTsorted_order(int32_t n, Less less) {
  return UTsorted_order(n, less, n);
}

// UTindexx, UTindexxD - the same for an array of integers or of doubles, under the published name.
// In     key[1..n], n >= 0
// Out    out_index[1..n], as above
void UTindexx(const int32_t* key, int32_t n, int32_t* out_index);
void UTindexxD(const double* key, int32_t n, int32_t* out_index);

}  // namespace zelvan
