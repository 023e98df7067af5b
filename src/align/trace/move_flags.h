// The move flags of every cell of one pair of sequences, and what a path follows among them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "align/cell_flags.h"
#include "align/lookup.h"
#include "align/simd/instruction_set.h"
#include "util/memory.h"

namespace zelvan {

// The flags of one target position: [query position].
struct FlagRow {
  uint8_t* origin;
  int64_t stride;
  uint8_t& operator[](int32_t i) const { return origin[i * stride]; }
};

// Flags by target position j and query position i: what cell_flags.h lists. Either the plain matrix, row after
// row, j = 0..dlen-2, i = 0..qlen-2, with row and column 0 clear; or, for 1..dlen-2 and 1..qlen-2, as kernels
// work them out: groups of successive target positions interleaved, each a step behind the one before, so that
// lane r of a group stands at query position s - r in step s.
struct MoveFlags {
  int32_t rows = 0;   // dlen
  int32_t cols = 0;   // qlen
  int32_t first = 0;  // target and query position of the first flag
  int32_t group = 1;
  int32_t steps = 0;      // of a group
  std::size_t least = 0;  // cells that there were before they were released
  UTvector<uint8_t> cells;

  FlagRow operator[](int32_t j) {
    const int64_t lane = (j - first) % group, before = (j - first) / group;
    return {cells.data() + (before * steps + lane - first) * group + lane, group};
  }
  FlagRow operator[](int32_t j) const { return const_cast<MoveFlags&>(*this)[j]; }
};

// uchararr, ucharfree - make and release the plain matrix of one pair (stored lengths), all clear, with room for
// at least so many cells. Once released, the next ones are made as large at once: what smaller ones leave
// behind as they grow would stay with the process.
MoveFlags uchararr(int32_t dlen, int32_t qlen, std::size_t least = 0);
void ucharfree(MoveFlags& flags);

// fit_flags - shapes the flags for a further pair, in the storage they already have where it is enough;
// their contents are then of no use until they are filled.
// In     group: 1 for the plain matrix; steps: of a larger group, at least qlen-2 + group-1
void fit_flags(MoveFlags& flags, int32_t dlen, int32_t qlen, int32_t group = 1, int32_t steps = 0);

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
  int32_t best = -1;            // best cell value; -1 when there is no cell
  UTvector<int32_t> high_rows;  // target positions with a cell of at least the threshold, from the first on
};

// fill_flags - the recurrence of swli (of swl, with equal penalties) over all cells of one pair.
// In     target[1..dlen-2]; threshold: CELL_HIGH is set from there on, and nowhere below 1; set: usable on
//        this machine
// Out    out_flags: shaped for the pair and filled
// Exact  the flags of every set are those of REFERENCE, which negative penalties always take; but where
//        CELL_ZERO is set, other sets may differ in the moves
FlagSweep fill_flags(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                     const GapRows& gaps, int32_t threshold, InstructionSet set, MoveFlags& out_flags);

// The cells with CELL_HIGH of the rows that lie interleaved.
struct HighCells {
  int32_t first_row = 0;
  UTvector<UTvector<int32_t>> positions;  // [row - first_row] query positions, ascending
  const UTvector<int32_t>& of_row(int32_t j) const {
    return positions[static_cast<std::size_t>(j - first_row)];
  }
};

// find_high_cells - those of the rows that lie with row j: flags of a row lie far apart, and to read one row is
// to read them all.
// In     out_cells: empty, or of this pair's flags; stays as it is when it holds row j already
void find_high_cells(const MoveFlags& flags, int32_t j, HighCells& out_cells);

// any_negative - whether a penalty of any query position is negative.
bool any_negative(const GapRows& gaps, int32_t qlen);

}  // namespace zelvan
