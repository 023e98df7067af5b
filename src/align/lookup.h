// The query lookup table, which is also the profile: the score of every residue code at every query position.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/matrix.h"
#include "util/table.h"

namespace zelvan {

// table[c][i], c = 0..inlen-1, i = 0..len-2 (len = stored query length): score of code c against query
// position i, matrix units x PRECISION. Position 0 is the pad; entry len-1 is zero and never read. mlookgap's
// tables hold penalties in two rows: extension (or the linear penalty) in the row of GAP_CHARACTER, opening
// in the row of IGAP_CHARACTER; query position i reads entry i-1 of them.
using LookupTable = Table<int32_t>;

// mlook - the table of an encoded query: table[c][i] = pairscore[query code at i][c].
LookupTable mlook(const int8_t* query, int32_t len, const ScoreMatrix& matrix);

// mlookgap - the same, then the two gap rows set to LD_PEN and LI_PEN throughout.
LookupTable mlookgap(const int8_t* query, int32_t len, const ScoreMatrix& matrix, int32_t ld_pen,
                     int32_t li_pen, const Params* p);

// simple_look - a table of the same shape, all zero: counts per position and code.
LookupTable simple_look(int32_t len, const ScoreMatrix& matrix);

// FreeLookup - releases a table's cells.
void FreeLookup(LookupTable& table);

// PrintLookup2 - scores / PRECISION, from position 0. PrintLookup3 - entries as they stand, from position 1.
// PrintLookup4 - the layout of PrintLookup3, entries / PRECISION. All quotients truncate toward zero.
void PrintLookup2(int32_t len, const LookupTable& table, const ScoreMatrix& matrix, FILE* stream,
                  const Params* p);
void PrintLookup3(int32_t len, const LookupTable& table, const ScoreMatrix& matrix, FILE* stream);
void PrintLookup4(int32_t len, const LookupTable& table, const ScoreMatrix& matrix, FILE* stream,
                  const Params* p);

}  // namespace zelvan
