// The comment lines before every score list and the block of times at the end of a run.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/timing.h"

// The straight line of mean score against length of the z-score statistics.
struct LineFit {
  double slope = 0;
  double intercept = 0;
  double variance = 0;
  int32_t nval = 0;
};

// dump_info - the run header; its last line is "# Start_Scores: " and a rule. z_fit_opt: shown when DO_STATS
// is 1.
void dump_info(FILE* stream, const SeqRec& query, const ScoreMatrix& matrix, const LineFit* z_fit_opt,
               const Params* p);

// FullParameterDump - the appendix for VERBOSE 1: four lines, on purpose no more.
void FullParameterDump(FILE* stream, const Params* p);

// print_times2 - the times block. query_length in residues, db_residues of the whole database.
void print_times2(FILE* stream, const RunTimes& times, int32_t query_length, int32_t db_residues);
