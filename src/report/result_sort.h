// The order of the results. Every sort returns a permutation of 0..n-1 that the lists print from its last
// element backwards. Equal keys stand in the order that the heap-based index sorts leave them in.
#pragma once

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
UTvector<int32_t> do_pv_sort(const double* key, int32_t n, const Params* p);

// do_zs_sort - by an integer key, ascending; the identity unless DO_SORT is 1.
// In     zscores[0..n-1]
UTvector<int32_t> do_zs_sort(const int32_t* zscores, int32_t n, const Params* p);

}  // namespace zelvan
