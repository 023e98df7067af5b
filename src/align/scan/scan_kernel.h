// The contract between the batch scan and its vector kernels: what a kernel object is handed and gives back.
// Everything here is plain data, because kernel objects are compiled for instruction sets that the rest of
// the program must not contain.
//
// Narrow lanes saturate: their smallest value stands for score 0, so that the floor of the local alignment
// costs nothing, and a best score at their largest value betrays overflow. Lanes of 32 bits hold scores as
// they are and take penalties of any sign.
#pragma once

#include <cstdint>

#include "align/simd/instruction_set.h"

namespace zelvan {

// A score row has one entry per residue code; the last code is the pad that fills a lane behind its sequence.
constexpr uint8_t PAD_CODE = ROW_CODES - 1;

// Where a kernel gets the scores of a column from.
enum class ScoreSource {
  PREPARED,     // few distinct query positions: their scores are looked up once per column, then reused
  DIRECT,       // each query position looks its scores up
  BY_POSITION,  // the same, and penalties may differ from position to position
};

// What the engine must know of a recurrence.
struct Recurrence {
  int32_t columns;        // database positions per pass over the query
  int32_t columns32;      // the same in lanes of 32 bits
  int32_t state_vectors;  // kept per query position from one block of columns to the next
  bool direct_narrow;     // lanes of 8 and 16 bits have kernels for scores that are not PREPARED, too
};

// One piece of work for a kernel: `blocks` blocks of KernelShape.columns database positions in every lane.
struct KernelCall {
  LaneWidth width;
  ScoreSource source;
  bool affine;  // opening and extension are told apart

  int32_t positions;    // query residues
  const uint8_t* rows;  // the distinct score rows, one after the other, in the layout of the shape
  int32_t row_count;
  const int32_t* row_of;  // [positions]: the row of each query position
  // Penalties of each query position, [positions + 1] (the last is read, not used): the value in every lane
  // of 32 bits. Unless BY_POSITION, the first one serves all.
  const uint32_t* open;    // of the first position of a gap; where not affine, of every position
  const uint32_t* extend;  // of each further one; affine only
  uint32_t shift;          // frame shift; where the recurrence has one

  // Vectors below are aligned to 64 bytes.
  uint8_t* state;    // [positions][state_vectors] vectors, kept from call to call
  uint8_t* scratch;  // [row_count][columns] vectors (PREPARED only)

  int32_t blocks;
  const uint8_t* residues;     // [blocks * columns][lanes]
  const uint8_t* boundaries;   // [blocks]: not 0 where a sequence ends before the block or begins with it
  const uint8_t* begin_masks;  // [blocks] vectors, all ones in the lanes that begin; read at boundaries
  uint8_t* best;               // one vector, kept from call to call: best cell of each lane's sequence so far
  uint8_t* best_before;        // [blocks + 1] vectors out: best before the block, written at boundaries; the
                               // last one always
};

// What a kernel's registers hold.
struct KernelShape {
  int32_t lanes;  // sequences side by side; 0: the kernel has no lanes of this width
  int32_t lane_bytes;
  int32_t columns;
  int32_t state_vectors;
  bool split_rows;     // 16-bit rows: the 32 low bytes, then the 32 high bytes
  int32_t zero_score;  // the lane value that stands for score 0
};

// zero_score - 0 where lanes do not saturate, otherwise their smallest value.
constexpr int32_t zero_score(InstructionSet set, LaneWidth width) {
  if (set == InstructionSet::PORTABLE || width == LaneWidth::BITS32) return 0;
  return width == LaneWidth::BITS8 ? INT8_MIN : INT16_MIN;
}

// kernel_shape - not for REFERENCE, which has no lanes.
constexpr KernelShape kernel_shape(InstructionSet set, LaneWidth width, const Recurrence& recurrence) {
  const bool has_lanes = set != InstructionSet::PORTABLE || width != LaneWidth::BITS8;
  const bool shuffles_bytes =
      set == InstructionSet::SSE41 || set == InstructionSet::AVX2 || set == InstructionSet::NEON;
  return {has_lanes ? vector_bytes(set) / lane_bytes(width) : 0,
          lane_bytes(width),
          width == LaneWidth::BITS32 ? recurrence.columns32 : recurrence.columns,
          recurrence.state_vectors,
          width == LaneWidth::BITS16 && shuffles_bytes,
          zero_score(set, width)};
}

}  // namespace zelvan
