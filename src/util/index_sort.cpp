#include "util/index_sort.h"

namespace {

template <class Key>
void heap_index(const Key* key, int32_t n, int32_t* index) {
  for (int32_t j = 1; j <= n; ++j) index[j] = j;
  if (n < 2) return;
  int32_t l = n / 2 + 1;
  int32_t ir = n;
  for (;;) {
    int32_t held;
    if (l > 1) {
      held = index[--l];
    } else {
      held = index[ir];
      index[ir] = index[1];
      if (--ir == 1) {
        index[1] = held;
        return;
      }
    }
    const Key q = key[held];
    int32_t i = l;
    for (int64_t j = 2 * static_cast<int64_t>(l); j <= ir;) {
      if (j < ir && key[index[j]] < key[index[j + 1]]) ++j;
      if (!(q < key[index[j]])) break;
      index[i] = index[j];
      i = static_cast<int32_t>(j);
      j *= 2;
    }
    index[i] = held;
  }
}

}  // namespace

void UTindexx(const int32_t* key, int32_t n, int32_t* out_index) {
  heap_index(key, n, out_index);
}
void UTindexxD(const double* key, int32_t n, int32_t* out_index) {
  heap_index(key, n, out_index);
}
