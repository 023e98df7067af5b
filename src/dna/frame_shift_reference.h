// The score-only kernels of the translated searches, written straight from their definition: the reference
// for every faster scan. One sequence is DNA, translated in three interleaved frames (position i holds the
// residue of the codon that starts at nucleotide i): a step of 3 along it stays in the frame, a step of 1
// changes the frame at the cost of `shift` and consumes no residue of the protein.
#pragma once

#include <cstdint>

#include "align/lookup.h"

// Labels shared by the three kernels:
// In     qlen, dlen: stored lengths, pads included; qlen <= MP_LEN (checked by the caller)
//        target[1..dlen-2]: residue codes, the rows
//        table[c][j], j = 1..qlen-2, the columns: score of code c at query position j, matrix units x
//        PRECISION
//        open, extend: penalties of the first and of each further position of a gap, shift: of a step between
//        frames; same unit, any sign
// Out    best cell value >= 0, or -1 when no cell was computed
// Ends   never: no allocation, no output, no exit
// Exact  every vector variant returns the same integer for every input

namespace zelvan {

// nswli - translated target, protein query; a vertical gap step is one codon.
int32_t nswli(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, int32_t extend,
              int32_t open, int32_t shift);

// npswli2 - protein target, translated query; a horizontal gap step is one codon.
int32_t npswli2(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, int32_t extend,
                int32_t open, int32_t shift);

// npswl - the same with linear gaps: every gap step costs `extend`.
int32_t npswl(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, int32_t extend,
              int32_t shift);

// Move flags of the frame shift; the other moves are those of MoveFlag in cell_flags.h.
constexpr uint8_t SHIFT_IN_ROWS = 8;      // nswli
constexpr uint8_t SHIFT_IN_COLUMNS = 32;  // npswli2

}  // namespace zelvan
