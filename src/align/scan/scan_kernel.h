// The contract between the batch scan and its vector kernels: what a kernel object is handed and gives back.
// Everything here is plain data, because kernel objects are compiled for instruction sets that the rest of
// the program must not contain.
#pragma once

#include <cstdint>

#include "align/simd/instruction_set.h"

namespace zelvan {

// A score row has one entry per residue code; the last code is the pad that fills a lane behind its sequence.
constexpr int32_t ROW_CODES = 32;
constexpr uint8_t PAD_CODE = ROW_CODES - 1;

// Narrow lanes saturate: their smallest value stands for score 0, so that the floor of the local alignment
// costs nothing, and a best score at their largest value betrays overflow. Lanes of 32 bits hold scores as they
// are and take penalties of any sign.
enum class LaneWidth { BITS8, BITS16, BITS32 };

// What is computed. The translated ones take a step of 3 along the DNA for a codon and a step of 1 for a frame
// shift.
enum class Recurrence {
  LOCAL,              // protein against protein
  TRANSLATED_TARGET,  // protein query, DNA database; affine
  TRANSLATED_QUERY,   // DNA query, protein database
};

// Where a kernel gets the scores of a column from.
enum class ScoreSource {
  PREPARED,  // few distinct query positions: their scores are looked up once per column, then reused
  DIRECT,    // each query position looks its scores up; penalties may differ from position to position
};

// One piece of work for a kernel: `blocks` blocks of SHAPE.columns database positions in every lane.
struct KernelCall {
  Recurrence recurrence;
  LaneWidth width;
  ScoreSource source;
  bool affine;  // opening and extension are told apart

  int32_t positions;    // query residues
  const uint8_t* rows;  // the distinct score rows, one after the other, in the layout of the shape
  int32_t row_count;
  const int32_t* row_of;  // [positions]: the row of each query position
  // Penalties of each query position, [positions + 1] (the last is read, not used): the value in every lane
  // of 32 bits. PREPARED uses the first for all.
  const uint32_t* open;    // of the first position of a gap; where not affine, of every position
  const uint32_t* change;  // opening XOR extension; affine only
  uint32_t shift;          // frame shift; translated recurrences only

  // Vectors below are aligned to 64 bytes.
  uint8_t* state;    // [positions][state_vectors] vectors, kept from call to call
  uint8_t* scratch;  // [row_count][columns] vectors (PREPARED only)

  int32_t blocks;
  const uint8_t* residues;  // [blocks * columns][lanes]
  const uint8_t* turns;     // [blocks]: not 0 when a sequence ends before this block or begins with it
  const uint8_t* masks;     // [blocks] vectors, all ones in the lanes that begin; read where turns is set
  uint8_t* best;            // one vector, kept from call to call: best cell of each lane's sequence so far
  uint8_t* best_before;     // [blocks + 1] vectors out: best before the block, where turns is set; the
                            // last one always
};

// What a kernel's registers hold.
struct KernelShape {
  int32_t lanes;  // sequences side by side; 0: the kernel has no lanes of this width
  int32_t lane_bytes;
  int32_t columns;        // database positions per pass over the query
  int32_t state_vectors;  // kept per query position from one block of columns to the next
  bool split_rows;        // 16-bit rows: the 32 low bytes, then the 32 high bytes
  int32_t zero_score;     // the lane value that stands for score 0
};

// kernel_shape - not for REFERENCE, which has no lanes.
constexpr KernelShape kernel_shape(InstructionSet set, LaneWidth width, Recurrence recurrence) {
  const bool portable = set == InstructionSet::PORTABLE;
  const bool shuffles_bytes = set == InstructionSet::SSE41 || set == InstructionSet::AVX2;
  const int32_t vector_bytes = set == InstructionSet::AVX512 ? 64 : set == InstructionSet::AVX2 ? 32 : 16;
  const int32_t columns = recurrence == Recurrence::LOCAL               ? 4
                          : recurrence == Recurrence::TRANSLATED_TARGET ? 6
                                                                        : 2;
  const int32_t state_vectors = recurrence == Recurrence::TRANSLATED_TARGET ? 6 : 2;
  switch (width) {
    case LaneWidth::BITS8:
      return {portable ? 0 : vector_bytes, 1, columns, state_vectors, false, INT8_MIN};
    case LaneWidth::BITS16:
      return {vector_bytes / 2, 2, columns, state_vectors, shuffles_bytes, portable ? 0 : INT16_MIN};
    case LaneWidth::BITS32:
      break;
  }
  // Negative penalties would raise the score on pads behind a sequence: one column at a time needs no pads.
  // Translated targets go by codons; they have no negative penalties.
  return {vector_bytes / 4, 4, recurrence == Recurrence::TRANSLATED_TARGET ? 3 : 1, state_vectors, false, 0};
}

// One entry per instruction set. Returns the set that the object was compiled for.
InstructionSet run_kernel_portable(const KernelCall& call);
InstructionSet run_kernel_sse41(const KernelCall& call);
InstructionSet run_kernel_avx2(const KernelCall& call);
InstructionSet run_kernel_avx512(const KernelCall& call);

}  // namespace zelvan
