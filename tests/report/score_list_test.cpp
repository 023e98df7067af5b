#include "report/score_list.h"

#include <gtest/gtest.h>

#include "report/report_data.h"

namespace {

// Four hits; the order array ranks them 2, 0, 3, 1.
struct Hits {
  SeqRec seqs[4] = {reported_sequence("P1", "first", "ARN"), reported_sequence("Q2", "second", "A"),
                    reported_sequence("R3", "a long title", "ARND"), reported_sequence("R4", "", "")};
  int32_t scores[4] = {12345, -150, 20099, 800};
  double x[4] = {12.25, -0.5, 30.0, 7.0};
  double significance[4] = {1e-5, 0.002, 2.5e-12, 1e-5};
  int32_t order[4] = {1, 3, 0, 2};
  RunTimes times;
  Params p = params_of("PRECISION 100 MAX_NOUT 4 SHOW_BLURB 0 PROBCUT 0.01 PROBCUT2 0.0001");

  int32_t lines() {
    const ResultRec results = {seqs, scores, x, significance, nullptr, order, 4};
    int32_t count = 0;
    printed([&] { count = print_score_list3(seqs[0], results, report_matrix(), times, &p); });
    return count;
  }
};

TEST(ScoreList3, ListsAtMostMaxNoutButCountsAll) {
  const struct {
    int32_t max_nout, lines;
  } cases[] = {{-1, 4}, {0, 0}, {1, 1}, {3, 3}, {4, 4}, {2147483647, 4}, {-2147483647 - 1, 0}};
  for (const auto& c : cases) {
    Hits hits;
    hits.p.MAX_NOUT = c.max_nout;
    EXPECT_EQ(hits.lines(), c.lines) << c.max_nout;
    EXPECT_EQ(hits.p.n_probcut2_hits, 3) << c.max_nout;
  }
}

}  // namespace
