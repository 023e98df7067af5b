// The score-only scan kernels, written straight from their definition: the reference for every faster scan.
// Each returns the best local score of one query against one target in linear memory. One value and one set
// of move flags per cell: a gap step is an extension only when the cell that it leaves got its value by a gap
// in the same direction (a tie counts); every other gap step opens.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "driver/params.h"
#include "seq/matrix.h"

// Labels shared by the four kernels:
// In     qlen, dlen: stored lengths, pads included; qlen <= MP_LEN (checked by the caller)
//        target[1..dlen-2]: residue codes; table[c][i], i = 1..qlen-2: scores, matrix units x PRECISION
// Out    best cell value >= 0, or -1 when either sequence has no residue
// Ends   never: no allocation, no output, no exit
// Exact  every vector variant returns the same integer for every input
// Source Smith & Waterman 1981; gaps as told above

namespace zelvan {

// swl - linear gaps: every gap position costs `penalty`.
int32_t swl(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, int32_t penalty);

// swli - `open` for the first position of a gap, `extend` for each further one.
int32_t swli(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, int32_t extend,
             int32_t open);

// swlv, swliv - the same with the penalties of query position i in entry i-1 of the table's gap rows.
int32_t swlv(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
             const ScoreMatrix& matrix, const Params* p);
int32_t swliv(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
              const ScoreMatrix& matrix, const Params* p);

}  // namespace zelvan
