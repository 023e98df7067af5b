#include "stats/numerics/allocators.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace zelvan {
namespace {

// One element more than asked for, in front, so that the handle of a 1-based vector is the block itself.
template <class T>
T* allocate(long lo, long hi) {
  const auto count = static_cast<std::size_t>(hi) - static_cast<std::size_t>(lo) + 2;
  if (count > PTRDIFF_MAX / sizeof(T)) return nullptr;
  T* block = static_cast<T*>(std::malloc(count * sizeof(T)));
  return block == nullptr ? nullptr : block + (1 - lo);
}

template <class T>
void release(T* handle, long lo) {
  if (handle != nullptr) std::free(handle - (1 - lo));
}

template <class T>
int allocate_vector(long lo, long hi, T** out, int code) {
  *out = allocate<T>(lo, hi);
  return *out == nullptr ? code : NUMERICS_OK;
}

}  // namespace

int ivector(long lo, long hi, int** out) {
  return allocate_vector(lo, hi, out, NO_IVECTOR);
}
int dvector(long lo, long hi, double** out) {
  return allocate_vector(lo, hi, out, NO_DVECTOR);
}
int vector(long lo, long hi, double** out) {
  return allocate_vector(lo, hi, out, NO_VECTOR);
}

int dmatrix(long lo, long hi, long lo2, long hi2, double*** out) {
  *out = nullptr;
  double** rows = allocate<double*>(lo, hi);
  if (rows == nullptr) return NO_ROWS;
  const long nrows = hi - lo + 1;
  const long width = hi2 - lo2 + 1;
  double* elements = nullptr;
  if (width <= 0 || nrows < PTRDIFF_MAX / width) elements = allocate<double>(1, nrows * width);
  if (elements == nullptr) {
    release(rows, lo);
    return NO_ELEMENTS;
  }
  // The first row is set even when there is none, because the release finds the block through it.
  rows[lo] = elements + (1 - lo2);
  for (long i = lo + 1; i <= hi; ++i) rows[i] = rows[i - 1] + width;
  *out = rows;
  return NUMERICS_OK;
}

void free_ivector(int* v, long lo, long) {
  release(v, lo);
}
void free_dvector(double* v, long lo, long) {
  release(v, lo);
}
void free_vector(double* v, long lo, long) {
  release(v, lo);
}

void free_dmatrix(double** m, long lo, long, long lo2, long) {
  if (m == nullptr) return;
  std::free(m[lo] - (1 - lo2));
  release(m, lo);
}

}  // namespace zelvan
