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

// The index sorts count from 1 in keys and result: key_from_1[1..n], result 0-based.
template <class Key>
UTvector<int32_t> ascending(const UTvector<Key>& key_from_1, int32_t n,
                            void (*index_sort)(const Key*, int32_t, int32_t*)) {
  UTvector<int32_t> order(key_from_1.size());
  index_sort(key_from_1.data(), n, order.data());
  order.erase(order.begin());
  for (int32_t& k : order) --k;
  return order;
}

template <class Key>
UTvector<Key> counted_from_1(const Key* key, int32_t n) {
  UTvector<Key> copy(static_cast<std::size_t>(n) + 1);
  std::copy(key, key + n, copy.begin() + 1);
  return copy;
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

UTvector<int32_t> do_pv_sort(const double* key, int32_t n, const Params* p) {
  if (n <= 1) return identity(n);
  const bool smallest_is_best = p->PROB_TYPE == 2;
  UTvector<int32_t> order;
  if (p->DO_SORT == 1) {
    // A key that is no number would leave its neighbours unsorted.
    const double infinity = std::numeric_limits<double>::infinity();
    UTvector<double> ordered = counted_from_1(key, n);
    for (double& value : ordered) {
      if (std::isnan(value)) value = smallest_is_best ? infinity : -infinity;
    }
    order = ascending(ordered, n, UTindexxD);
  } else {
    order = identity(n);
  }
  if (smallest_is_best) std::reverse(order.begin(), order.end());
  return order;
}

UTvector<int32_t> do_zs_sort(const int32_t* zscores, int32_t n, const Params* p) {
  if (n <= 1 || p->DO_SORT != 1) return identity(n);
  return ascending(counted_from_1(zscores, n), n, UTindexx);
}

}  // namespace zelvan
