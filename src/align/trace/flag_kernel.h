// The contract between the sweep that fills move flags and its vector kernels. Plain data only: kernel
// objects are compiled for instruction sets that the rest of the program must not contain.
#pragma once

#include <cstdint>

namespace zelvan {

// Successive target positions that one call works out side by side: the cells of a vector lie one query
// position and one target position apart, so that none waits for another.
constexpr int32_t FLAG_ROWS = 16;

struct FlagBlock {
  int32_t positions;  // query residues
  // Score rows of the target positions, read at 1..positions. All entries FORBIDDEN behind the last one.
  const int32_t* scores[FLAG_ROWS];
  // Penalties (none negative) in reverse: extend[-i] is that of query position i. Readable, and not negative,
  // at -(positions + FLAG_ROWS + 1) .. 2 * FLAG_ROWS.
  const int32_t* extend;
  const int32_t* open;
  // Cells of the row above the block, and their values less a gap from there, [0 .. positions + FLAG_ROWS],
  // zero behind `positions`; on return those of the block's last row.
  int32_t* values;
  int32_t* gaps_down;
  int32_t* slanted_scores;  // scratch, [positions + FLAG_ROWS][FLAG_ROWS]
  uint8_t* slanted_flags;   // scratch, likewise
  int32_t rows;             // target positions whose flags are wanted
  uint8_t* const* flags;    // [rows] out: entries 1..positions, as in cell_flags.h
  int32_t*
      best;  // [FLAG_ROWS] out, aligned to 64 bytes: best cell of each target position or of one before it
};

// Lower than any sum of scores can make up for.
constexpr int32_t FORBIDDEN = INT32_MIN / 2;

// One entry per instruction set.
void run_flag_kernel_portable(const FlagBlock& block);
void run_flag_kernel_sse41(const FlagBlock& block);
void run_flag_kernel_avx2(const FlagBlock& block);
void run_flag_kernel_avx512(const FlagBlock& block);

}  // namespace zelvan
