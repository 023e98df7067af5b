// The alignment sections of the report.
#pragma once

#include <cstdint>
#include <cstdio>

#include "align/lookup.h"
#include "align/traceback.h"
#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "stats/lpfit.h"

// print_alignments_pp - realigns the best hits and writes one section for each to std_out, best first.
// In     scores[0..n-1]; order[0..n-1]: sequences by increasing score; at most p->MAX_AOUT hits are shown
//        p is changed during the call and restored (MIN_SCORE)
void print_alignments_pp(const SeqRec& query, const SeqRec* seqs, const int32_t* scores, const int32_t* order,
                         int32_t n, const ScoreMatrix& matrix, const LookupTable& table,
                         const LpfitData& lpfit, Params* p);
