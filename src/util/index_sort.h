// Index sorts. The order of equal keys is visible in score lists and database files, so the published heap
// sort is followed step for step.
#pragma once

#include <cstdint>

// UTindexx, UTindexxD - the ascending order of integer or double keys.
// In     key[1..n], n >= 0; entry 0 is never touched
// Out    out_index[1..n]: a permutation of 1..n with key[out_index[1]] <= key[out_index[2]] <= ...
// Exact  ties in the order that the heap procedure leaves; n < 2 gives the identity
// Source Numerical Recipes, indexx (heap-sort form)
void UTindexx(const int32_t* key, int32_t n, int32_t* out_index);
void UTindexxD(const double* key, int32_t n, int32_t* out_index);
