// The ranked score list, a file format as well as a report: the extraction mode reads it back.
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "report/run_header.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/timing.h"

// The results of one scan, column by column, indexed 0..n-1 by database sequence. Columns that a list variant
// does not print may be null.
struct ResultRec {
  const SeqRec* seqs = nullptr;
  const int32_t* scores = nullptr;       // x PRECISION
  const double* standardised = nullptr;  // x of the length-dependent fit
  const double* significance = nullptr;  // P or E value
  const int32_t* zscores = nullptr;      // x PRECISION
  const int32_t* order = nullptr;        // permutation, best last
  int32_t n = 0;
};

// print_score_list - scores only, those of at least MIN_SCORE. print_score_list2 - score, z-score and
// significance, those at or below PROBCUT; returns the number of lines. Both for the translated-DNA modes;
// z_fit_opt is the fit that the header shows when DO_STATS is 1.
void print_score_list(const SeqRec& query, const ResultRec& results, const ScoreMatrix& matrix,
                      RunTimes& times, Params* p);
int32_t print_score_list2(const SeqRec& query, const ResultRec& results, const ScoreMatrix& matrix,
                          const LineFit* z_fit_opt, RunTimes& times, Params* p);

// print_score_list3 - score, standardised score and significance, those at or below PROBCUT; returns the
// number of lines and sets p->n_probcut2_hits (counted over all n).
int32_t print_score_list3(const SeqRec& query, const ResultRec& results, const ScoreMatrix& matrix,
                          RunTimes& times, Params* p);
