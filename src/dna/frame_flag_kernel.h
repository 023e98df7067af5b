// The contract between the traceback of translated searches and its vector kernels, in the manner of
// align/trace/flag_kernel.h: target residues side by side, one per lane, the r-th at nucleotide s - r in step s.
// Plain data only: kernel objects are compiled for instruction sets that the rest of the program must not
// contain.
#pragma once

#include <cstdint>

#include "align/trace/flag_kernel.h"

namespace zelvan {

// Entries are of lane size, `rows` is flag_rows; no penalty is negative.
struct FrameFlagBlock {
  LaneWidth width;
  int32_t steps;  // positions + rows - 1, rounded up to flag_stride
  // Scores of the target residues: entry j is that of the codon at nucleotide j, readable from 1 - rows to
  // steps, less than any sum makes up for where there is none.
  const uint8_t* scores[MOST_FLAG_ROWS];
  int32_t extend, open, shift;  // penalties
  // Cells of the row above, and their values less a gap from there: entry j is nucleotide j's, readable from
  // 1 - rows to steps. On return those of the block's last row, no better than its own behind the last one.
  uint8_t* values;
  uint8_t* gaps_down;
  uint8_t* flags;      // [steps][rows] out, the steps from 1 on: as in frame_shift_reference.h, and CELL_ZERO
  uint8_t* best;       // [rows] out: best cell of each target residue or of one before it
  uint8_t* best_step;  // [rows] out: the first step with that cell; entries of lane size without sign
};

// One entry per instruction set.
void run_frame_flag_kernel_portable(const FrameFlagBlock& block);
void run_frame_flag_kernel_sse41(const FrameFlagBlock& block);
void run_frame_flag_kernel_avx2(const FrameFlagBlock& block);
void run_frame_flag_kernel_avx512(const FrameFlagBlock& block);
void run_frame_flag_kernel_neon(const FrameFlagBlock& block);

}  // namespace zelvan
