#include "report/score_list.h"

#include <gtest/gtest.h>

#include "report/report_data.h"

namespace zelvan {
namespace {

TEST(ScoreList3, ListsAtMostMaxNoutButCountsAll) {
  const UTvector<SeqRec> seqs(4, reported_sequence("P1", "first", "ARN"));
  const int32_t scores[] = {12345, -150, 20099, 800};
  const double x[] = {12.25, -0.5, 30.0, 7.0};
  const double significance[] = {1e-5, 0.002, 2.5e-12, 1e-5};
  const int32_t order[] = {1, 3, 0, 2};
  const ResultRec results = {seqs.data(), scores, x, significance, nullptr, order, 4};
  Params p = params_of("PRECISION 100 SHOW_BLURB 0 PROBCUT 0.01 PROBCUT2 0.0001");
  RunTimes times;
  const struct {
    int32_t max_nout, lines;
  } cases[] = {{-1, 4}, {0, 0}, {1, 1}, {3, 3}, {4, 4}, {2147483647, 4}, {-2147483647 - 1, 0}};
  for (const auto& c : cases) {
    p.MAX_NOUT = c.max_nout;
    int32_t lines = 0;
    printed([&] { lines = print_score_list3(seqs[0], results, report_matrix(), times, &p); });
    EXPECT_EQ(lines, c.lines) << c.max_nout;
    EXPECT_EQ(p.n_probcut2_hits, 3) << c.max_nout;
  }
}

}  // namespace
}  // namespace zelvan
