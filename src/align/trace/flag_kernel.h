// The contract between the sweep that fills move flags and its vector kernels. Plain data only: kernel
// objects are compiled for instruction sets that the rest of the program must not contain.
//
// A call works out some successive target positions side by side, one per lane, each a step behind the one
// before: the cells of a step lie one query position and one target position apart, so that none waits for
// another. At step s, the r-th target position stands at query position s - r.
#pragma once

#include <cstdint>

#include "align/simd/instruction_set.h"

namespace zelvan {

// flag_rows - target positions of one call: two vectors of them, so that one works while the other waits.
constexpr int32_t flag_rows(InstructionSet set, LaneWidth width) {
  return 2 * vector_bytes(set) / lane_bytes(width);
}
constexpr int32_t MOST_FLAG_ROWS = 64;

// Steps are taken by so many at a time.
constexpr int32_t flag_stride(LaneWidth width) {
  return 16 / lane_bytes(width);
}

// has_flag_lanes - whether there is a kernel of this width. Lanes of 16 bits saturate: their smallest value
// stands for 0 and a best cell at their largest betrays overflow. Those of the portable set cannot.
constexpr bool has_flag_lanes(InstructionSet set, LaneWidth width) {
  return width == LaneWidth::BITS32 || (width == LaneWidth::BITS16 && set != InstructionSet::PORTABLE);
}

// Entries are of lane size, `rows` is flag_rows; no penalty is negative.
struct FlagBlock {
  LaneWidth width;
  int32_t steps;  // positions + rows - 1, rounded up to flag_stride
  // Scores of the target positions: entry i is that of query position i, readable from 1 - rows to steps, less
  // than any sum makes up for where there is no such position. Nothing but such entries behind the last row.
  const uint8_t* scores[MOST_FLAG_ROWS];
  // Penalties in reverse: entry -i is that of query position i, readable from -(steps + 1) to rows. Where
  // there is no such position, more than any sum.
  const uint8_t* extend;
  const uint8_t* open;
  // Cells of the row above, and their values less a gap from there: entry i is query position i's, readable
  // from 1 - rows to steps, value 0 outside the query. On return those of the block's last row.
  uint8_t* values;
  uint8_t* gaps_down;
  int32_t below_high;  // lane value: cells above it are CELL_HIGH
  uint8_t* flags;      // [steps][rows] out, the steps from 1 on: as in cell_flags.h
  uint8_t* best;       // [rows] out: best cell of each target position or of one before it
};

// One entry per instruction set.
void run_flag_kernel_portable(const FlagBlock& block);
void run_flag_kernel_sse41(const FlagBlock& block);
void run_flag_kernel_avx2(const FlagBlock& block);
void run_flag_kernel_avx512(const FlagBlock& block);
void run_flag_kernel_neon(const FlagBlock& block);

}  // namespace zelvan
