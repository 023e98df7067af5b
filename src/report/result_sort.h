// The order of the results. Every sort returns a permutation of 0..n-1 that is printed from its last element
// backwards; ties keep the order of the heap-based index sorts.
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "util/memory.h"
#include "util/timing.h"

// do_result_sort - the identity; adjusts MAX_NOUT and MIN_ASCORE for the rest of the run unless SPECIAL.
UTvector<int32_t> do_result_sort(int32_t n, RunTimes& times, Params* p);

// do_pv_sort - by a double key, ascending (identity unless DO_SORT is 1); reversed when PROB_TYPE is 2.
UTvector<int32_t> do_pv_sort(const double* key, int32_t n, const Params* p);

// do_zs_sort - by an integer key, ascending (identity unless DO_SORT is 1).
UTvector<int32_t> do_zs_sort(const int32_t* zscores, int32_t n, const Params* p);
