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

TEST(IterHist, EndsBeyondTheLastIteration) {
  Params p = settings();
  IterHistory history;
  EXPECT_EXIT((errno = 0, record(history, {}, 3, &p)), testing::ExitedWithCode(0),
              "^Strange error in iter_hist - iteration exceeds max allowed: Success\n"
              "it = 3, p->NITER = 3\n$");
  p.NITER = 0;
  record(history, {1}, 4, &p);  // compared as unsigned: no limit
  EXPECT_EQ(history.size(), 5u);
}

TEST(PrintChanges, WritesWhatLeftAndWhatEntered) {
  const struct {
    UTvector<int32_t> previous, current;
    int32_t show_titles, lines;
    std::string left, entered;
  } cases[] = {
      {{0, 1}, {1, 0}, 0, 0, "", ""},
      {{}, {}, 1, 0, "", ""},
      {{}, {4}, 0, 1, "", "   0 0.12   7        E5 \n"},
      {{1}, {}, 0, 1, "  20 20.25  2e-10    IDEN \n", ""},
      {{0, 1, 2},
       {3, 0},
       1,
       3,
       "   2   20 20.25  2e-10    IDEN beta t\n"
       "   3   -1 -1.00  0.5      C3   gamma \n",
       "   1    4 4.00   0.001    IDENTD delta title                                       \n"},
  };
  const SeqRec db[] = {reported_sequence("A1", "alpha", ""), reported_sequence("IDENTB", "beta title", ""),
                       reported_sequence("C3", "gamma", ""), reported_sequence("IDENTD", "delta title", ""),
                       reported_sequence("E5", "", "")};
  for (const auto& c : cases) {
    Params p = settings();
    p.SHOW_TITLES = c.show_titles;
    IterHistory history;
    int32_t lines = 0;
    const auto changes = [&](int32_t iteration, const UTvector<int32_t>& hits) {
      record(history, hits, iteration, &p);
      return written([&](FILE* stream) { lines = print_changes(history, db, iteration, stream, &p); });
    };
    EXPECT_EQ(changes(0, c.previous), "");
    EXPECT_EQ(lines, -1);
    EXPECT_EQ(changes(1, c.current),
              "#\n# Reported in iteration 0 but below the threshold in this iteration (1)\n#\n" + c.left +
                  "# Reported in this iteration (1) but not in the previous iteration (0)\n#\n" + c.entered);
    EXPECT_EQ(lines, c.lines);
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
