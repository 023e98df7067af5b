// Search in sorted tables.
#pragma once

#include <cstdint>

namespace zelvan {

// UTfind_sorted - the place of a key in an ascending table.
// In     n >= 0; compare(k), k = 0..n-1: negative, 0 or positive as the key is below, equal to or above
//        entry k
// Returns 0..n-1, or -1 when no entry is equal
// Exact  halves down to at most LINEAR_RANGE entries, which are then searched from the first: which of
//        several equal entries is found, and which are found in a table out of order, never changes
template <class Compare>
int32_t UTfind_sorted(int32_t n, Compare compare) {
  constexpr int32_t LINEAR_RANGE = 6;
  int32_t first = 0;
  int32_t last = n - 1;
  while (last - first + 1 > LINEAR_RANGE) {
    const int32_t middle = first + (last - first) / 2;
    const int order = compare(middle);
    if (order == 0) return middle;
    (order > 0 ? first : last) = middle;
  }
  for (int32_t k = first; k <= last; ++k) {
    if (compare(k) == 0) return k;
  }
  return -1;
}

}  // namespace zelvan
