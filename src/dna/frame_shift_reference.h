// The score-only kernels of the translated searches, written straight from their definition: the reference
// for every faster scan. One sequence is DNA, translated in three interleaved frames (position i holds the
// residue of the codon that starts at nucleotide i): a step of 3 along it stays in the frame, a step of 1
// changes the frame at the cost of fs_pen and consumes no residue of the protein.
#pragma once

#include <cstdint>

#include "align/lookup.h"

// Labels shared by the three kernels:
// In     table[c][j], j = 1..m-2: score of residue code c at column j, matrix units x PRECISION; m <= MP_LEN
//        rows[1..n-2]: residue codes of the row sequence
//        ld_pen, li_pen, fs_pen: same unit, any sign
// Out    best cell value >= 0, or -1 when no cell was computed
// Ends   never: no allocation, no output, no exit
// Exact  the reference: every vector variant returns the same integer for every input

namespace zelvan {

// nswli - translated rows against protein columns, affine gaps; a vertical gap step is one codon.
int32_t nswli(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table, int32_t ld_pen,
              int32_t li_pen, int32_t fs_pen);

// npswli2 - protein rows against translated columns, affine gaps; a horizontal gap step is one codon.
int32_t npswli2(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table, int32_t ld_pen,
                int32_t li_pen, int32_t fs_pen);

// npswl - the same with linear gaps: every gap step costs ld_pen.
int32_t npswl(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table, int32_t ld_pen,
              int32_t fs_pen);

// Move flags of the frame shift; the other moves are those of MoveFlag in cell_flags.h.
constexpr uint8_t SHIFT_IN_ROWS = 8;      // nswli
constexpr uint8_t SHIFT_IN_COLUMNS = 32;  // npswli2

}  // namespace zelvan
