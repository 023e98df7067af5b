// The four trace files of a fit, in the working directory, each written afresh by every fit:
//   PROCESSING     the course of the fit, step by step: number and summary of the scores; for each width
//                  tried the first usable bin (-1: none) and the number of usable ranges (j); for each range
//                  its first bin (templpl, i), its hits (lplscorerange), 10 x its lpl, location, scale and
//                  chi-square; the two fits against lpl; the result
//   STAT_DATA      a line for each fine bin: bin, 10 x lpl of its lower edge, hits, mean lpl, sum of scores,
//                  mean score, number of the range it belongs to (0: none)
//   FREQTAB_HISTS  a block for each range: "score:  share of the range's hits", scores with hits only
//   FREQTAB_OUT    a block for each range: bucket middle, share of the hits, fitted density, for every score
#pragma once

#include "stats/lpfit.h"
#include "stats/range_fit.h"
#include "stats/score_table.h"
#include "util/file_record.h"

namespace zelvan {

struct FitTrace {
  FileRec processing;
  FileRec hists;
  FileRec freqtab;
  FileRec stat;
};

// open_fit_trace - creates the files that the flags of `lpfit` ask for; the others have no stream.
// Ends   when a file cannot be created ("Error opening File", status -1)
FitTrace open_fit_trace(const LpfitData& lpfit);

// The steps, for the files that are open. `choice` has at least one range; `number` counts them from 1.
void trace_summary(const FitTrace& trace, const ScoreSummary& summary, int32_t n);
void trace_width(const FitTrace& trace, const RangeChoice& tried);
void trace_choice(const FitTrace& trace, const ScoreTable& table, const RangeChoice& choice);
void trace_range(const FitTrace& trace, const ScoreTable& table, const LplRange& range, int32_t number,
                 const FrequencyTable& frequencies, const RangeFit& fit);
void trace_result(const FitTrace& trace, const LpfitData& lpfit);

// close_fit_trace - closes the files; a failed write ends the run (status 1).
void close_fit_trace(FitTrace& trace);

}  // namespace zelvan
