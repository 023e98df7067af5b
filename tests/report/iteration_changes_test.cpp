#include "report/iteration_changes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>

#include "report/report_data.h"

namespace zelvan {
namespace {

// Matches found in one iteration must not leak into the comparison with the next one.
TEST(PrintChanges, CountsWhatCameAndWentOverManyIterations) {
  Random random(3);
  const Params p = params_of("PRECISION 100 NITER 200");
  const UTvector<SeqRec> db(5, reported_sequence("A1", "alpha", ""));
  const int32_t scores[5] = {};
  const double values[5] = {};
  IterHistory history;
  std::set<int32_t> before;
  for (int32_t i = 0; i < p.NITER; ++i) {
    UTvector<int32_t> order = {0, 1, 2, 3, 4};
    std::shuffle(order.begin(), order.end(), random);
    order.resize(random() % 6);
    const auto n = static_cast<int32_t>(order.size());
    iter_hist(history, {nullptr, scores, values, values, nullptr, order.data(), n}, i, n, &p);
    const std::set<int32_t> now(order.begin(), order.end());
    UTvector<int32_t> changed;
    std::set_symmetric_difference(before.begin(), before.end(), now.begin(), now.end(),
                                  std::back_inserter(changed));
    int32_t lines = 0;
    written([&](FILE* stream) { lines = print_changes(history, db.data(), i, stream, &p); });
    EXPECT_EQ(lines, i == 0 ? -1 : static_cast<int32_t>(changed.size()));
    before = now;
  }
}

}  // namespace
}  // namespace zelvan
