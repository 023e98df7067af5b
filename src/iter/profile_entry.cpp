#include "iter/profile_entry.h"

#include <cmath>

#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {

int32_t profile_entry(double value, int32_t i, const char* keys, const Params* p) {
  const double whole = std::trunc(value);
  if (std::fabs(whole) <= INT32_MAX) return static_cast<int32_t>(whole);  // false for NaN
  UTend_input(std_err,
              "Profile entry x PRECISION (%d) of query position %d would be %g (at most %d):  Reduce %s\n",
              p->PRECISION, i, value, INT32_MAX, keys);
}

}  // namespace zelvan
