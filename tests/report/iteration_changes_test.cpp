#include "report/iteration_changes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "report/report_data.h"

namespace {

Params settings() {
  return params_of("PRECISION 100 NITER 3 SHOW_IDENT_WIDTH 4 SHOW_TITLES_WIDTH 6");
}

// Records the hits of one iteration, best first.
void record(IterHistory& history, const UTvector<int32_t>& best_first, int32_t iteration, const Params* p) {
  const int32_t scores[] = {1000, 2050, -150, 400, 99};
  const double x[] = {10.5, 20.25, -1, 4, 0.125};
  const double significance[] = {1e-5, 2e-10, 0.5, 0.001, 7};
  const UTvector<int32_t> order(best_first.rbegin(), best_first.rend());
  const auto n = static_cast<int32_t>(order.size());
  iter_hist(history, {nullptr, scores, x, significance, nullptr, order.data(), n}, iteration, n, p);
}

// Matches found in one iteration must not leak into the comparison with the next one.
TEST(PrintChanges, PairsListsOverManyIterations) {
  Random random(3);
  Params p = settings();
  p.NITER = 200;
  IterHistory history;
  const UTvector<SeqRec> db(5, reported_sequence("A1", "alpha", ""));
  UTvector<int32_t> before, now;
  for (int32_t i = 0; i < p.NITER; ++i) {
    now = {0, 1, 2, 3, 4};
    std::shuffle(now.begin(), now.end(), random);
    now.resize(random() % 6);
    record(history, now, i, &p);
    std::sort(now.begin(), now.end());
    UTvector<int32_t> changed;
    std::set_symmetric_difference(before.begin(), before.end(), now.begin(), now.end(),
                                  std::back_inserter(changed));
    written([&](FILE* stream) {
      EXPECT_EQ(print_changes(history, db.data(), i, stream, &p),
                i == 0 ? -1 : static_cast<int32_t>(changed.size()));
    });
    before = now;
  }
}

}  // namespace
