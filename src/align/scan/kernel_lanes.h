// What the recurrences of the batch scans share. Included after vec_<set>.h; everything is local to the
// kernel object, because nothing compiled here may be shared with objects for other processors.
//
// All lanes advance together along their own database sequences. A pass walks down the query with a block of
// database positions ("columns") side by side, so that the state of a query position is loaded and stored
// once for the whole block. Instead of move flags, each cell hands on finished gap values: its own value less
// extension or opening, chosen by whether it equals the gap value that arrived. Where a lane saturates at 0
// this may take a gap for arrived that in truth was negative; what it then hands on is at most 0 either way,
// so no cell changes.
#pragma once

#include "align/scan/scan_kernel.h"
#include "align/simd/lanes.h"

namespace zelvan {
namespace {

template <class V>
constexpr bool SATURATES = zero_score(COMPILED_SET, V::WIDTH) < 0;

// Score 0 in every lane.
template <class V>
V zero_cells() {
  if constexpr (!SATURATES<V>) return splat<V>(0);
  return splat<V>(V::WIDTH == LaneWidth::BITS8 ? 0x80808080U : 0x80008000U);
}

// Lanes that saturate have the floor at 0 for nothing.
template <class V>
V diagonal_move(V diagonal, V score) {
  if constexpr (!SATURATES<V>) return max(add(diagonal, score), zero_cells<V>());
  return add(diagonal, score);
}

// The penalties at one query position.
template <class V>
struct Gaps {
  V open;
  Choice<V> extend_or_open;  // where gaps are affine
};

template <class V, bool AFFINE>
Gaps<V> gaps_at(const KernelCall& call, int32_t position) {
  const V open = splat<V>(call.open[position]);
  return {open, choice_of(AFFINE ? splat<V>(call.extend[position]) : open, open)};
}

// The gap value that a cell hands on.
// In     arrived: the gap value of the same direction that the cell could have taken
template <class V, bool AFFINE>
V gap_value(V cell, V arrived, const Gaps<V>& gaps) {
  if constexpr (!AFFINE) return sub(cell, gaps.open);
  return sub_choice(cell, equal(cell, arrived), gaps.extend_or_open);
}

// The scores of a block of columns against every query position.
template <class V, int COLUMNS, ScoreSource SOURCE>
struct BlockScores {
  using Lookup = Codes<V, COLUMNS>;
  static constexpr int BLOCK_BYTES = COLUMNS * VECTOR_BYTES;
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
        for (int k = 0; k < COLUMNS; ++k) store(scratch + r * BLOCK_BYTES + k * VECTOR_BYTES, scores[k]);
      }
    }
  }
  void at(int32_t position, V* out) const {
    if constexpr (SOURCE == ScoreSource::PREPARED) {
      const uint8_t* prepared = scratch + row_of[position] * BLOCK_BYTES;
      for (int k = 0; k < COLUMNS; ++k) out[k] = load<V>(prepared + k * VECTOR_BYTES);
    } else {
      codes.look_up(rows + row_of[position] * Lookup::ROW_BYTES, out);
    }
  }
};

// Runs a recurrence over the blocks of a call. SCAN::pass takes one block; its template argument tells
// whether sequences begin with it, in the lanes of `begins`.
template <class SCAN>
void run(const KernelCall& call) {
  using V = typename SCAN::Lanes;
  const uint8_t* residues = call.residues;
  V best = load<V>(call.best);
  for (int32_t b = 0; b < call.blocks; ++b) {
    if (call.boundaries[b] != 0) {
      const auto begins = load_mask<V>(call.begin_masks + b * VECTOR_BYTES);
      store(call.best_before + b * VECTOR_BYTES, best);
      best = select(begins, zero_cells<V>(), best);
      SCAN::template pass<true>(call, residues, begins, best);
    } else {
      SCAN::template pass<false>(call, residues, typename V::Mask{}, best);
    }
    residues += SCAN::COLUMNS * LANES<V>;
  }
  store(call.best_before + call.blocks * VECTOR_BYTES, best);
  store(call.best, best);
}

}  // namespace
}  // namespace zelvan
