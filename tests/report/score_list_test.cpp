#include "report/score_list.h"

#include <gtest/gtest.h>

#include <cmath>

#include "report/report_data.h"
#include "seq/database_info.h"

namespace {

// Four hits; the order array ranks them 2, 0, 3, 1.
struct Hits {
  SeqRec db[4] = {reported_sequence("P1", "first", "ARN"), reported_sequence("Q2", "second", "A"),
                  reported_sequence("LONG_IDENT", "a long title", "ARND"), reported_sequence("R4", "", "")};
  int32_t scores[4] = {12345, -150, 20099, 800};
  double x[4] = {12.25, -0.5, 30.0, 7.0};
  double significance[4] = {1e-5, 0.002, 2.5e-12, 1e-5};
  int32_t zscores[4] = {1225, -50, 3000, 333};
  int32_t order[4] = {1, 3, 0, 2};
  ResultRec results = {db, scores, x, significance, zscores, order, 4};
  BdbInfo info;
  RunTimes times;
  Params p;
  int32_t lines = 0;

  Hits() {
    set_keys(p,
             "PRECISION 100 MAX_NOUT 4 SHOW_IDENT_WIDTH 6 SHOW_TITLES_WIDTH 8 SHOW_TITLES 0 SHOW_LEN 0 "
             "SHOW_BLURB 0 PROBCUT 0.01 PROBCUT2 0.0001");
    p.binfo = &info;
  }
  Hits(const Hits&) = delete;
  std::string list() {
    return printed([&] { print_score_list(db[0], results, report_matrix(), times, &p); });
  }
  std::string list2() {
    return printed([&] { print_score_list2(db[0], results, report_matrix(), nullptr, times, &p); });
  }
  std::string list3() {
    return printed([&] { lines = print_score_list3(db[0], results, report_matrix(), times, &p); });
  }
};

TEST(ScoreLists, HaveTheirColumns) {
  Hits hits;
  hits.p.SHOW_TITLES = 1;
  hits.p.SHOW_LEN = 1;
  hits.p.MIN_SCORE = 800;
  EXPECT_EQ(hits.list(),
            "   1 200 LONG_I a long t  4\n"
            "   2 123 P1     first     3\n"
            "   3 8 R4               0\n");
  EXPECT_EQ(hits.list2(),
            "   1  200  30.00 2.5e-12  LONG_I a long t\n"
            "   2  123  12.25 1e-05    P1     first   \n"
            "   3    8   3.33 1e-05    R4             \n"
            "   4   -1  -0.50 0.002    Q2     second  \n");
  EXPECT_EQ(hits.list3(),
            "   1  200 30.00  2.5e-12  LONG_I a long t\n"
            "   2  123 12.25  1e-05    P1     first   \n"
            "   3    8 7.00   1e-05    R4             \n"
            "   4   -1 -0.50  0.002    Q2     second  \n");
}

TEST(ScoreList3, ListsAtMostMaxNoutButCountsAll) {
  const struct {
    int32_t max_nout, lines;
  } cases[] = {{-1, 4}, {0, 0}, {1, 1}, {3, 3}, {4, 4}, {2147483647, 4}, {-2147483647 - 1, 0}};
  for (const auto& c : cases) {
    Hits hits;
    hits.p.MAX_NOUT = c.max_nout;
    hits.list3();
    EXPECT_EQ(hits.lines, c.lines) << c.max_nout;
    EXPECT_EQ(hits.p.n_probcut2_hits, 3) << c.max_nout;
  }
}

TEST(ScoreList3, ComparesSinglePrecisionCutOffsAsDoubles) {
  Hits hits;
  hits.p.PROBCUT = hits.p.PROBCUT2 = 0.001F;  // 0.00100000004749745...
  const double values[4] = {0.00100000004, 0.00100000005, std::nan(""), 0.0};
  std::copy(values, values + 4, hits.significance);
  hits.list3();
  EXPECT_EQ(hits.lines, 2);
  EXPECT_EQ(hits.p.n_probcut2_hits, 2);
}

TEST(ScoreLists, RefusePrecisionZero) {
  Hits hits;
  hits.p.PRECISION = 0;
  hits.p.MAX_NOUT = 0;
  EXPECT_EXIT(hits.list(), testing::ExitedWithCode(255), "^PRECISION is 0: .*\n$");
}

}  // namespace
