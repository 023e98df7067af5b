// The move flags of every cell of a protein against a translated DNA sequence.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "align/simd/instruction_set.h"
#include "align/trace/move_flags.h"

namespace zelvan {

struct FramePenalties {
  int32_t extend, open, shift;
};

struct BestCell {
  int32_t score = -1;  // -1: no cell
  int32_t row = 0;
  int32_t column = 0;
};

// fill_frame_flags - the recurrence of npswli2 (of npswl, with equal penalties) over all cells of one pair.
// In     table[c][j], j = 1..m-2; rows[1..n-2]; set: usable on this machine
// Out    out_flags: shaped for the pair and filled: [row][column], with SHIFT_IN_COLUMNS and without CELL_HIGH
// Returns the best cell; of equals the first, rows before columns
// Exact  the flags of every set are those of REFERENCE, which negative penalties always take; but where
//        CELL_ZERO is set, other sets may differ in the moves
BestCell fill_frame_flags(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table,
                          const FramePenalties& penalties, InstructionSet set, MoveFlags& out_flags);

}  // namespace zelvan
