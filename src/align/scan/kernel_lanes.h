// What the recurrences of the vector kernels share. Included after vec_<set>.h; everything is local to the
// kernel object, because nothing compiled here may be shared with objects for other processors.
//
// All lanes advance together along their own database sequences. A pass walks down the query with a block of
// database positions ("columns") side by side, so that the state of a query position is loaded and stored once
// for the whole block. Instead of move flags, each cell hands on finished gap values: its own value less
// extension or opening, chosen by whether it equals the gap value that arrived. Where a lane saturates at 0
// this may take a gap for arrived that in truth was negative; what it then hands on is at most 0 either way, so
// no cell changes.
#pragma once

#include "align/scan/scan_kernel.h"

namespace zelvan {
namespace {

template <class V, Recurrence R>
constexpr KernelShape SHAPE = kernel_shape(COMPILED_SET, V::WIDTH, R);
template <class V>
constexpr int VECTOR_BYTES = SHAPE<V, Recurrence::LOCAL>.lanes* SHAPE<V, Recurrence::LOCAL>.lane_bytes;

// The representation of score 0, in every lane.
template <class V>
V zero_score() {
  if constexpr (SHAPE<V, Recurrence::LOCAL>.zero_score == 0) return splat<V>(0);
  return splat<V>(V::WIDTH == LaneWidth::BITS8 ? 0x80808080U : 0x80008000U);
}

// Lanes that saturate have the floor at 0 for nothing.
template <class V>
V diagonal_move(V diagonal, V score) {
  if constexpr (SHAPE<V, Recurrence::LOCAL>.zero_score == 0) {
    return max(add(diagonal, score), zero_score<V>());
  }
  return add(diagonal, score);
}

// The penalties at one query position. `change` is used where opening and extension are told apart.
template <class V>
struct Gaps {
  V open, change;
};

template <class V, bool AFFINE>
V gap_value(V cell, V arrived, const Gaps<V>& gaps) {
  if constexpr (AFFINE) return carry(cell, arrived, gaps.open, gaps.change);
  return sub(cell, gaps.open);
}

template <class V, bool AFFINE>
Gaps<V> gaps_at(const KernelCall& call, int32_t position) {
  const V open = splat<V>(call.open[position]);
  if constexpr (AFFINE) return {open, splat<V>(call.change[position])};
  return {open, open};
}

// The scores of a block of columns against every query position.
template <class V, int COLUMNS, ScoreSource SOURCE>
struct BlockScores {
  using Lookup = Codes<V, COLUMNS>;
  static constexpr int BLOCK_BYTES = COLUMNS * VECTOR_BYTES<V>;
  const Lookup codes;
  const uint8_t* const rows;
  const int32_t* const row_of;
  uint8_t* const scratch;

  BlockScores(const KernelCall& call, const uint8_t* residues)
      : codes(residues), rows(call.rows), row_of(call.row_of), scratch(call.scratch) {
    if constexpr (SOURCE == ScoreSource::PREPARED) {
      for (int32_t r = 0; r < call.row_count; ++r) {
        V scores[COLUMNS];
        codes.look_up(rows + r * Lookup::ROW_BYTES, scores);
        for (int k = 0; k < COLUMNS; ++k) store(scratch + r * BLOCK_BYTES + k * VECTOR_BYTES<V>, scores[k]);
      }
    }
  }
  void at(int32_t position, V* out) const {
    if constexpr (SOURCE == ScoreSource::PREPARED) {
      const uint8_t* prepared = scratch + row_of[position] * BLOCK_BYTES;
      for (int k = 0; k < COLUMNS; ++k) out[k] = load<V>(prepared + k * VECTOR_BYTES<V>);
    } else {
      codes.look_up(rows + row_of[position] * Lookup::ROW_BYTES, out);
    }
  }
};

// Runs a recurrence over the blocks of a call. SCAN::pass takes one block; its last template argument tells
// whether lanes begin a sequence with it.
template <class SCAN>
void run(const KernelCall& call) {
  using V = typename SCAN::Lanes;
  constexpr int VECTOR = VECTOR_BYTES<V>;
  const uint8_t* residues = call.residues;
  V best = load<V>(call.best);
  for (int32_t b = 0; b < call.blocks; ++b) {
    if (call.turns[b] != 0) {
      const V begins = load<V>(call.masks + b * VECTOR);
      store(call.best_before + b * VECTOR, best);
      best = select(begins, zero_score<V>(), best);
      SCAN::template pass<true>(call, residues, begins, best);
    } else {
      SCAN::template pass<false>(call, residues, zero_score<V>(), best);
    }
    residues += SCAN::COLUMNS * SHAPE<V, Recurrence::LOCAL>.lanes;
  }
  store(call.best_before + call.blocks * VECTOR, best);
  store(call.best, best);
}

}  // namespace
}  // namespace zelvan
