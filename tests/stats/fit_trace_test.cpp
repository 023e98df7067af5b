#include "stats/fit_trace.h"

#include <gtest/gtest.h>

#include <string>

#include "support/capture.h"

namespace {

TEST(FitTrace, TellsTheCourseOfAFit) {
  ScoreTable table;
  table.lowscore = 20;
  table.nbuckets = 2;
  table.counts.assign(2 * LPL_BINS, 0);
  table.bins[60] = {4, 402, 81};
  table.counts[60 * 2] = 3;
  table.counts[60 * 2 + 1] = 1;
  table.bins[70] = {1, 110, 21};
  RangeChoice choice = ranges_of_width(table, 2, 2);
  RangeFit fit;
  const FrequencyTable frequencies = range_frequencies(table, choice.ranges[0], fit);
  fit = {20.5, 1, 0.25};
  LpfitData result;
  result.paramB[1] = 0;

  const TemporaryDirectory directory;
  directory.inside([&] {
    LpfitData lpfit;
    lpfit.trace_processing = lpfit.trace_hists = lpfit.trace_freqtab = lpfit.trace_stat = 1;
    FitTrace trace = open_fit_trace(lpfit);
    trace_summary(trace, {5, 20, 22, 20.4, 0.5, 102, 2082}, 5);
    trace_width(trace, RangeChoice{1, {}});
    trace_width(trace, choice);
    trace_choice(trace, table, choice);
    trace_range(trace, table, choice.ranges[0], 1, frequencies, fit);
    for (const int32_t form : {0, 1, 5}) {
      result.EXPORLIN = form;
      trace_result(trace, result);
    }
    close_fit_trace(trace);
  });
  EXPECT_EQ(file_content(directory.at("PROCESSING")),
            "count = 5, num_scores = 5, numpts = 5 i = 5\n"
            "maxscore = 22, lowscore = 20, scoremean = 20.400000, scoreSD = 0.500000, scoresum = 102.000000, "
            "scoresumsq = 2082.000000, count = 5\n"
            "lplbucketwidth = 0.100000\n"
            "lpllowrange = -1, j = 0, lplrangewidth = 1\n"
            "lpllowrange = 60, j = 1, lplrangewidth = 2\n"
            "templpl = 2, lplrangewidth = 2, lpllowrange = 60, lplhighrange = 61\n"
            "finalj = 1\n"
            "m = 1, templpl = 60, lplscorerange = 4, num_score_buckets = 2\n"
            "LPL RANGE: 100\n"
            "p = 1, i = 60, lpl range = 100.500000, paramA = 20.500000, paramB = 1.000000, chisq = 0.250000\n"
            "ParameterA - -2.000000 + 1.000000 * (exp(-(lpl)/-1.000000)) EXPORLIN = 0\n"
            "ParameterB - 0.000000 + 1.000000 * (lpl)\n"
            "ParameterA - -2.000000 + 1.000000 * (lpl) EXPORLIN = 1\n"
            "ParameterB - 0.000000 + 1.000000 * (lpl)\n"
            "EXPORLIN = 5\n"
            "ParameterB - 0.000000 + 1.000000 * (lpl)\n");
  EXPECT_EQ(
      file_content(directory.at("STAT_DATA")),
      "60  100  4  10.050000  81.000000  20.250000  1\n70  110  1  11.000000  21.000000  21.000000  0\n");
  EXPECT_EQ(file_content(directory.at("FREQTAB_HISTS")), "20:  0.750000\n21:  0.250000\n\n\n");
  EXPECT_EQ(file_content(directory.at("FREQTAB_OUT")),
            "20.500000 0.750000    0.367879\n21.500000 0.250000    0.254646\n\n\n");
}

}  // namespace
