// Traceback: the local alignment paths of one pair of sequences, and the move flags to trace them by.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "align/trace/move_flags.h"
#include "align/trace/path_store.h"
#include "align/trace/path_trace.h"
#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// swpathl (modes 200 and 210), swpathli (202 and 212) - align one pair.
// Does   the recurrence of swl or swli over the whole matrix, then find_all_paths or, where that gives the
//        same sooner, find_high_paths. Penalties come from the table's gap rows in the modes 210 and 212, else
//        from the arguments
// In     query (not read), target: codes; qlen, dlen: stored lengths
// Out    out_store: emptied, then the paths whose best is at least p->MIN_SCORE and that span more than one
//        position of either sequence; out_flags: shaped and filled
// Returns the best cell value, or -1 when there is no cell. The scan kernels give the same, but where gaps at
//        the last query position add to the score (negative penalties there): scans do not carry that cell
int32_t swpathl(const int8_t* query, int32_t qlen, const int8_t* target, int32_t dlen,
                const LookupTable& table, int32_t ld_pen, PathStore& out_store, MoveFlags& out_flags,
                const ScoreMatrix& matrix, const Params* p);
int32_t swpathli(const int8_t* query, int32_t qlen, const int8_t* target, int32_t dlen,
                 const LookupTable& table, int32_t ld_pen, int32_t li_pen, PathStore& out_store,
                 MoveFlags& out_flags, const ScoreMatrix& matrix, const Params* p);

// align_pair - swpathl or swpathli as p->MODE asks, with `threshold` as the MIN_SCORE that they read; then
// dosort.
// Does   this is the one place that changes MIN_SCORE, which is put back
// In     query, target: encoded; threshold x PRECISION
// Out    out_flags: shaped for the pair; handing over the flags of one pair to the next saves their
//        allocation
// Returns the paths, highest best first; none for any other mode
UTvector<PathRec> align_pair(const SeqRec& query, const SeqRec& target, const LookupTable& table,
                             int32_t threshold, MoveFlags& out_flags, const ScoreMatrix& matrix, Params* p);

}  // namespace zelvan
