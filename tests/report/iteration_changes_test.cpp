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

TEST(PrintChanges, WritesWhatLeftAndWhatEntered) {
  const SeqRec db[] = {reported_sequence("A1", "alpha", ""), reported_sequence("IDENTB", "beta title", ""),
                       reported_sequence("C3", "gamma", ""), reported_sequence("IDENTD", "delta title", "")};
  Params p = settings();
  IterHistory history;
  for (const auto& [titles, in_beta, in_delta] :
       {std::tuple(1, " beta t", " delta title                                       "),
        std::tuple(0, " ", " ")}) {
    p.SHOW_TITLES = titles;
    record(history, {0, 1}, 0, &p);
    record(history, {3, 0}, 1, &p);
    const std::string changes = written([&](FILE* stream) { print_changes(history, db, 1, stream, &p); });
    EXPECT_EQ(changes, "#\n# Reported in iteration 0 but below the threshold in this iteration (1)\n#\n" +
                           std::string(titles == 1 ? "   2 " : "") + "  20 20.25  2e-10    IDEN" + in_beta +
                           "\n# Reported in this iteration (1) but not in the previous iteration (0)\n#\n" +
                           std::string(titles == 1 ? "   1 " : "") + "   4 4.00   0.001    IDENTD" +
                           in_delta + "\n");
  }
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
