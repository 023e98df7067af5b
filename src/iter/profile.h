// Profiles: the significant hits of one iteration rewrite the query's lookup table for the next scan.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "driver/params.h"
#include "report/multiple_alignment.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "stats/lpfit.h"

// build_profile - realigns the nsel best hits, fills `aldat` with a row for every significant path, and
// rewrites `table` from them. In     order[0..nhits-1]: sequences from least to most significant; nsel: hits
// at or below PROBCUT2
//        p is changed during the call and restored (MIN_SCORE)
void build_profile(const SeqRec& query, const SeqRec* seqs, const int32_t* scores, const int32_t* order,
                   int32_t nhits, const ScoreMatrix& matrix, LookupTable& table, const LpfitData& lpfit,
                   int32_t nsel, AlignData& aldat, Params* p);
