// The order of the results. Every sort returns a permutation of 0..n-1 that the lists print from its last
// element backwards. Equal keys stand in the order that the heap-based index sorts leave them in. Of the best
// `wanted` hits the order is made sure of; the others, which nothing asks for, may stand in any.
#pragma once

#include <algorithm>
#include <cstdint>

#include "driver/params.h"
#include "util/memory.h"
#include "util/timing.h"

namespace zelvan {

// do_result_sort - the identity, and the settings that the lists and alignments after it go by.
// Does   unless SPECIAL is set: fills the sorting slot of `times`; limits MAX_NOUT to n, or sets it to n with
//        NPRINT_TO_THRESHOLD 1; sets MIN_ASCORE to MIN_SCORE. All of it stays for the rest of the run
UTvector<int32_t> do_result_sort(int32_t n, RunTimes& times, Params* p);

// do_pv_sort - by a double key, ascending; the identity unless DO_SORT is 1. With PROB_TYPE 2 the result is
// reversed, for a key that is smallest for the best hit.
// In     key[0..n-1]; NaN counts as the least significant key
UTvector<int32_t> do_pv_sort(const double* key, int32_t n, int32_t wanted, const Params* p);

// do_zs_sort - by an integer key, ascending; the identity unless DO_SORT is 1.
// In     zscores[0..n-1]
UTvector<int32_t> do_zs_sort(const int32_t* zscores, int32_t n, int32_t wanted, const Params* p);

// ranks_within - how many of the best hits a list needs to show all that are at or below a cut-off.
// In     key[0..n-1], ascending: what they are ranked by; significance[0..n-1] need not follow it strictly
// Returns the hits whose key is not below that of any hit that passes; 0..n
template <class Key>
int32_t ranks_within(float cutoff, const Key* key, const double* significance, int32_t n) {
  const auto passes = [&](int32_t k) { return static_cast<double>(cutoff) >= significance[k]; };
  int32_t lowest = -1;
  for (int32_t k = 0; k < n; ++k) {
    if (passes(k) && (lowest == -1 || key[k] < key[lowest])) lowest = k;
  }
  if (lowest == -1) return 0;
  return static_cast<int32_t>(std::count_if(key, key + n, [&](Key value) { return !(value < key[lowest]); }));
}

}  // namespace zelvan
