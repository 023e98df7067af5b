// A path written out as two gapped rows.
#pragma once

#include <cstdint>

#include "align/trace/move_flags.h"
#include "align/trace/path_store.h"
#include "driver/params.h"
#include "seq/matrix.h"
#include "util/memory.h"

namespace zelvan {

// Two rows of codes of equal length, gaps as the code of GAP_CHARACTER.
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

}  // namespace zelvan
