#include "report/result_sort.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "util/index_sort.h"
#include "util/streams.h"

namespace zelvan {
namespace {

UTvector<int32_t> identity(int32_t n) {
  UTvector<int32_t> order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  return order;
}

}  // namespace

UTvector<int32_t> do_result_sort(int32_t n, RunTimes& times, Params* p) {
  if (p->SPECIAL == 0) {
    times[TIME_SORT] = UT_get_times(1);
    if (p->TIME > 5) {
      std::fputs("Sort results list  ", std_err);
      UT_show_times(std_err, 1);
    }
    p->MAX_NOUT = std::min(p->MAX_NOUT, n);
    if (p->NPRINT_TO_THRESHOLD == 1) p->MAX_NOUT = n;
    if (p->VERBOSE > 5) {
      // Labels and values are crossed; readers of these lines know them so.
      std::fprintf(std_err, "p->MIN_ASCORE %d p->MIN_SCORE %d\n", p->MIN_SCORE, p->MIN_ASCORE);
    }
    p->MIN_ASCORE = p->MIN_SCORE;
  }
  return identity(n);
}

UTvector<int32_t> do_pv_sort(const double* key, int32_t n, int32_t wanted, const Params* p) {
  if (n <= 1) return identity(n);
  const bool smallest_is_best = p->PROB_TYPE == 2;
  // NaN, which no comparison places, would leave its neighbours unsorted.
  const double infinity = std::numeric_limits<double>::infinity();
  const double worst = smallest_is_best ? infinity : -infinity;
  const auto value = [key, worst](int32_t k) { return std::isnan(key[k]) ? worst : key[k]; };
  const auto below = [value](int32_t a, int32_t b) { return value(a) < value(b); };
  // What is smallest leaves the heap last.
  UTvector<int32_t> order =
      p->DO_SORT == 1 ? UTsorted_order(n, below, smallest_is_best ? n : wanted) : identity(n);
  if (smallest_is_best) std::reverse(order.begin(), order.end());
  return order;
}

UTvector<int32_t> do_zs_sort(const int32_t* zscores, int32_t n, int32_t wanted, const Params* p) {
  if (n <= 1 || p->DO_SORT != 1) return identity(n);
  return UTsorted_order(
      n, [zscores](int32_t a, int32_t b) { return zscores[a] < zscores[b]; }, wanted);
}

}  // namespace zelvan
