// The ranked score list, a file format as well as a report: the extraction mode reads it back, by columns
// (with titles shown: rank, score, [second number, significance,] identifier) between two marker lines.
#pragma once

#include <cstdint>

#include "align/scan/scan_results.h"
#include "driver/params.h"
#include "report/run_header.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/timing.h"

namespace zelvan {

// The three lists write to std_out: run header, one line for each of the best MAX_NOUT sequences (-1: of all)
// that passes the list's filter, best first, and the closing marker; they fill the scores slot of `times`.
// They end the run (status -1) when PRECISION is 0. z_fit_opt: as in dump_info.

// print_score_list - the scores, of those that reach MIN_SCORE. SPECIAL: all sequences, worst first, no
// closing marker, no time.
void print_score_list(const SeqRec& query, const ResultRec& results, const ScoreMatrix& matrix,
                      RunTimes& times, const Params* p);

// print_score_list2 - score, z-score and significance, of those at or below PROBCUT. Returns the lines
// written
int32_t print_score_list2(const SeqRec& query, const ResultRec& results, const ScoreMatrix& matrix,
                          const LineFit* z_fit_opt, RunTimes& times, const Params* p);

// print_score_list3 - score, standardised score and significance, of those at or below PROBCUT.
// Out    p->n_probcut2_hits: how many of all n are at or below PROBCUT2
// Returns the lines written
int32_t print_score_list3(const SeqRec& query, const ResultRec& results, const ScoreMatrix& matrix,
                          RunTimes& times, Params* p);

// require_precision - ends the run when PRECISION is 0: scores could not be divided by it (status -1).
void require_precision(const Params* p);

// whole_score - a score in matrix units, truncated toward zero, as every list shows it.
// In     score x PRECISION
// Ends   when PRECISION is 0 (status -1)
int32_t whole_score(int32_t score, const Params* p);

}  // namespace zelvan
