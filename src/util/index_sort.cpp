#include "util/index_sort.h"

namespace zelvan {

void UTindexx(const int32_t* key, int32_t n, int32_t* out_index) {
  UTindexx_by([key](int32_t a, int32_t b) { return key[a] < key[b]; }, n, out_index);
}

void UTindexxD(const double* key, int32_t n, int32_t* out_index) {
  UTindexx_by([key](int32_t a, int32_t b) { return key[a] < key[b]; }, n, out_index);
}

}  // namespace zelvan
