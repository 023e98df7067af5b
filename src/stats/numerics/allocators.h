// Vectors and matrices of the fitting routines, 1-based as published: index lo is the first element that the
// caller asked for. Nothing in this folder ends the process: every routine returns a status, 0 or one of the
// codes below, and a new object comes back through the last argument. That is why storage here does not come
// from the checked allocator, which would end the run.
#pragma once

namespace zelvan {

// Status of the fitting routines: what failed. The numbers are shown to the user.
enum NumericsStatus : int {
  NUMERICS_OK = 0,
  NO_VECTOR = 11,      // vector; also the work vectors of gaussj
  NO_IVECTOR = 12,     // ivector
  NO_DVECTOR = 15,     // dvector
  NO_ROWS = 17,        // dmatrix, table of rows
  SINGULAR = 33,       // gaussj: the matrix has no inverse
  NOT_CONVERGED = 34,  // a fit used up its steps, or its result is not finite or not in range
  NO_ELEMENTS = 171    // dmatrix, block of elements
};

// ivector, dvector, vector - elements lo..hi, unset. vector is a second allocator of doubles with a code of
// its own. On failure *out is null.
// In     lo <= 1 <= hi + 1
int ivector(long lo, long hi, int** out);
int dvector(long lo, long hi, double** out);
int vector(long lo, long hi, double** out);

// dmatrix - rows lo..hi of elements lo2..hi2 in one contiguous block, unset. On failure *out is null.
int dmatrix(long lo, long hi, long lo2, long hi2, double*** out);

// The releases take the bounds of the allocation; null is allowed.
void free_ivector(int* v, long lo, long hi);
void free_dvector(double* v, long lo, long hi);
void free_vector(double* v, long lo, long hi);
void free_dmatrix(double** m, long lo, long hi, long lo2, long hi2);

}  // namespace zelvan
