// The move flags of every cell of one pair of sequences, and what a path follows among them.
#pragma once

#include <array>
#include <cstdint>

#include "align/cell_flags.h"
#include "align/lookup.h"
#include "align/simd/instruction_set.h"
#include "util/memory.h"
#include "util/table.h"

namespace zelvan {

// [target position][query position]: what cell_flags.h lists; row and column 0 clear.
using MoveFlags = Table<uint8_t>;

// uchararr, ucharfree - make and release the flags of one pair (stored lengths).
MoveFlags uchararr(int32_t dlen, int32_t qlen);
void ucharfree(MoveFlags& flags);

// fit_flags - shapes the flags for a further pair, in the storage they already have where it is enough;
// their contents are then of no use until they are filled.
void fit_flags(MoveFlags& flags, int32_t dlen, int32_t qlen);

// The two schemes differ in what a path follows when several moves reach a cell's value, and in where a path
// ends when a gap in the target repeats its best.
struct PathScheme {
  std::array<uint8_t, 8> preferred;  // [moves]: the one that is followed, 0 without one
  bool left_takes_ties;
};
constexpr PathScheme LINEAR_PATHS = {
    {0, MOVE_DIAGONAL, MOVE_UP, MOVE_DIAGONAL, MOVE_LEFT, MOVE_DIAGONAL, MOVE_UP, MOVE_DIAGONAL}, true};
constexpr PathScheme FLAGGED_PATHS = {
    {0, MOVE_DIAGONAL, MOVE_UP, MOVE_UP, MOVE_LEFT, MOVE_LEFT, MOVE_UP, MOVE_UP}, false};

// Penalties: query position i reads entry i-1. With linear gaps both rows are the same.
struct GapRows {
  const int32_t* extend;
  const int32_t* open;
};

// What a sweep over all cells leaves beside the flags.
struct FlagSweep {
  int32_t best = -1;         // best cell value; -1 when there is no cell
  int32_t first_row = 0;     // target positions from the first to the last with a cell of at least the
  int32_t last_row = 0;      // threshold, and perhaps some more; 0: none
  UTvector<int32_t> values;  // [0 .. qlen-2] the cells of the row above the first; unset when there is none
};

// fill_flags - the recurrence of swli (of swl, with equal penalties) over all cells of one pair.
// In     target[1..dlen-2]; out_flags shaped for the pair; set: usable on this machine
// Out    out_flags[j][i], j = 0..dlen-2, i = 0..qlen-2
// Exact  the flags of every set are those of REFERENCE, which negative penalties always take
FlagSweep fill_flags(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                     const GapRows& gaps, int32_t threshold, InstructionSet set, MoveFlags& out_flags);

// any_negative - whether a penalty of any query position is negative.
bool any_negative(const GapRows& gaps, int32_t qlen);

}  // namespace zelvan
