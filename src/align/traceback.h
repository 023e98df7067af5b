// Traceback: every local alignment path of one pair of sequences, kept by its start point.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "align/scan_reference.h"
#include "driver/params.h"
#include "seq/matrix.h"
#include "util/memory.h"
#include "util/table.h"

struct PathRec {
  int32_t start_i = 0;  // query position where the path begins
  int32_t start_j = 0;  // target position where it begins
  int32_t end_i = 0;    // best cell on the path so far
  int32_t end_j = 0;
  int32_t best = 0;   // its value, x PRECISION
  int32_t score = 0;  // value of the cell that holds this record
};

// Paths kept, one slot per query position of their start; total over all slots.
struct PathStore {
  UTvector<UTvector<PathRec>> slots;  // [0 .. qlen-1]
  int32_t total = 0;
};

// Move flags of every cell, [target position][query position].
using MoveFlags = Table<uint8_t>;

// uchararr, ucharfree - make and release the flags of one pair (stored lengths).
MoveFlags uchararr(int32_t dlen, int32_t qlen);
void ucharfree(MoveFlags& flags);

// fit_flags - shapes the flags for a further pair, in the storage they already have where it is enough;
// their contents are then of no use until an aligner fills them.
void fit_flags(MoveFlags& flags, int32_t dlen, int32_t qlen);

// swpathl (modes 200 and 210), swpathli (202 and 212) - align one pair.
// Does   the recurrence of swl or swli over the whole matrix, carrying in every cell where its path began and
//        the best cell on it. A path ends where the cell diagonally behind it falls to 0, or at the end of
//        either sequence; of the paths from one start the best is kept, of equals the first. Penalties come
//        from the table's gap rows in the modes 210 and 212, else from the arguments
// In     query (not read), target: codes; qlen, dlen: stored lengths; out_flags shaped for them
// Out    out_store: emptied, then the paths whose best is at least p->MIN_SCORE and that span more than one
//        position of either sequence; out_flags[j][i], j = 0..dlen-2, i = 0..qlen-2, with row and column 0
//        clear
// Returns the best cell value (that of the scan kernel), or -1 when no cell was computed
int32_t swpathl(const int8_t* query, int32_t qlen, const int8_t* target, int32_t dlen,
                const LookupTable& table, int32_t ld_pen, PathStore& out_store, MoveFlags& out_flags,
                const ScoreMatrix& matrix, const Params* p);
int32_t swpathli(const int8_t* query, int32_t qlen, const int8_t* target, int32_t dlen,
                 const LookupTable& table, int32_t ld_pen, int32_t li_pen, PathStore& out_store,
                 MoveFlags& out_flags, const ScoreMatrix& matrix, const Params* p);

// align_pair - swpathl or swpathli as p->MODE asks (no path for any other mode), then dosort: the paths,
// highest best first. The one routine that the alignment printer and the profile builder share. out_flags is
// shaped for the pair: handing over the flags of one pair to the next saves their allocation.
UTvector<PathRec> align_pair(const int8_t* query, int32_t qlen, const int8_t* target, int32_t dlen,
                             const LookupTable& table, MoveFlags& out_flags, const ScoreMatrix& matrix,
                             const Params* p);

// present - 1 when the slot already holds a path with this start_j, which a better record replaces; else 0.
int32_t present(const PathRec& record, UTvector<PathRec>& slot);

// addsco - appends a record to the slot of its start_i.
void addsco(const PathRec& record, PathStore& store);

// dosort - empties the store into one list, highest best first; the order of equals is that of a heap sort.
// Ends   when slots and total disagree (status 0)
UTvector<PathRec> dosort(PathStore& store);

// One path written out: two rows of codes of equal length, gaps as the code of GAP_CHARACTER.
struct AlignedRows {
  UTvector<int8_t> query;
  UTvector<int8_t> target;
  int32_t length = 0;  // columns; both rows hold a zero behind the last one
};

// aliseq (linear modes), ialiseq (flagged modes) - trace one path back.
// Ends   "Disaster in aliseq" when a cell has no move (status -1)
void aliseq(const int8_t* query, const int8_t* target, const PathRec& path, const MoveFlags& flags,
            AlignedRows& out_rows, const ScoreMatrix& matrix, const Params* p);
void ialiseq(const int8_t* query, const int8_t* target, const PathRec& path, const MoveFlags& flags,
             AlignedRows& out_rows, const ScoreMatrix& matrix, const Params* p);

// trace_path - aliseq or ialiseq as p->MODE asks.
void trace_path(const int8_t* query, const int8_t* target, const PathRec& path, const MoveFlags& flags,
                AlignedRows& out_rows, const ScoreMatrix& matrix, const Params* p);

// reval - reverses buffer[first..last] in place.
void reval(int8_t* buffer, int32_t first, int32_t last);
