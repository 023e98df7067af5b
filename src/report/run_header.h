// The comment lines before every score list and the block of times at the end of a run. Readers of a list
// skip what starts with "#" and look for the last line of the header.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "stats/zscore_stats.h"
#include "util/timing.h"

namespace zelvan {

// dump_info - the run header; its last line is "# Start_Scores: " and a rule.
// In     p->binfo must be set
//        z_fit_opt: written when DO_STATS is 1, null as a line of no points (the reader of a list tells from
//        "# FIT" lines how many columns it has). p->lpfit: with DO_STATS 2 its coefficients; left out where
//        there is no such fit
void dump_info(FILE* stream, const SeqRec& query, const ScoreMatrix& matrix, const LineFit* z_fit_opt,
               const Params* p);

// FullParameterDump - the appendix for VERBOSE 1: four lines, on purpose no more.
void FullParameterDump(FILE* stream, const Params* p);

// print_times2 - the times block, with the rate of the scan in millions of cells a second.
// In     query_length in residues, db_residues of the whole database
//        times: a slot that was never filled is shown as zeros; without a scan time the rates are 0
void print_times2(FILE* stream, const RunTimes& times, int32_t query_length, int64_t db_residues);

}  // namespace zelvan
