// The recurrence of npswli2 with the flags of every cell. Included by kernel objects after their lanes;
// everything is local to them.
#pragma once

#include "align/cell_flags.h"
#include "align/trace/slanted_scores.h"
#include "dna/frame_flag_kernel.h"
#include "dna/frame_shift_reference.h"

namespace zelvan {
namespace {

constexpr int FRAMES = 3;

template <class V>
void fill_frame_flag_block(const FrameFlagBlock& block) {
  constexpr int ROWS = VECTORS * LANES<V>;
  constexpr int BYTES = lane_bytes(V::WIDTH);
  constexpr bool SATURATES = V::WIDTH == LaneWidth::BITS16;
  const V zero = all_lanes<V>(SATURATES ? INT16_MIN : 0);
  const V extend = all_lanes<V>(block.extend), open = all_lanes<V>(block.open);
  const V shift_penalty = all_lanes<V>(block.shift);
  const uint8_t* rows[ROWS];
  for (int r = 0; r < ROWS; ++r) rows[r] = block.scores[r] - r * BYTES;
  V h[VECTORS];         // cells of the previous step
  V gap_down[VECTORS];  // their values less a gap to the next target residue
  // Of the last codon, in rings of three: what a gap to the next codon leaves, and the cells above.
  V gap_left[VECTORS][FRAMES], corner[VECTORS][FRAMES];
  V best[VECTORS], best_step[VECTORS];
  for (int v = 0; v < VECTORS; ++v) {
    // A row that has not reached the DNA yet stays at 0.
    h[v] = gap_down[v] = best[v] = zero;
    best_step[v] = all_lanes<V>(0);
    for (int f = 0; f < FRAMES; ++f) gap_left[v][f] = corner[v][f] = zero;
  }
  uint8_t* flags = block.flags;
  for (int32_t first = 1; first <= block.steps; first += STRIDE<V>) {
    V scores[VECTORS][STRIDE<V>];
    for (int v = 0; v < VECTORS; ++v) load_slant<V>(rows + v * LANES<V>, first, scores[v]);
    for (int t = 0; t < STRIDE<V>; ++t) {
      const int32_t s = first + t;
      const V step = all_lanes<V>(s);
      V up[VECTORS], above[VECTORS];
      for (int v = 0; v < VECTORS; ++v) {
        up[v] = from_above(gap_down, v, block.gaps_down, s);
        above[v] = from_above(h, v, block.values, s);
      }
      for (int v = 0; v < VECTORS; ++v) {
        const V left = gap_left[v][0];
        const V diagonal = add(corner[v][0], scores[v][t]);
        const V shift = sub(h[v], shift_penalty);
        h[v] = max(max(max(diagonal, up[v]), left), shift);
        if constexpr (!SATURATES) h[v] = max(h[v], zero);
        const auto is_up = equal(h[v], up[v]), is_left = equal(h[v], left);
        LaneFlags<V> moves;
        moves.set(equal(h[v], diagonal), MOVE_DIAGONAL);
        moves.set(is_up, MOVE_UP);
        moves.set(is_left, MOVE_LEFT);
        moves.set(equal(h[v], shift), SHIFT_IN_COLUMNS);
        moves.set(equal(h[v], zero), CELL_ZERO);
        moves.store(flags + v * LANES<V>);
        gap_down[v] = sub(h[v], select(is_up, extend, open));
        for (int f = 0; f + 1 < FRAMES; ++f) {
          gap_left[v][f] = gap_left[v][f + 1];
          corner[v][f] = corner[v][f + 1];
        }
        gap_left[v][FRAMES - 1] = sub(h[v], select(is_left, extend, open));
        corner[v][FRAMES - 1] = above[v];
        best_step[v] = select(greater(h[v], best[v]), step, best_step[v]);
        best[v] = max(best[v], h[v]);
      }
      flags += ROWS;
      keep_last_lane(h[VECTORS - 1], block.values, s);
      keep_last_lane(gap_down[VECTORS - 1], block.gaps_down, s);
    }
  }
  for (int v = 0; v < VECTORS; ++v) {
    store(block.best + v * VECTOR_BYTES, best[v]);
    store(block.best_step + v * VECTOR_BYTES, best_step[v]);
  }
}

inline void run_frame_flag_kernel(const FrameFlagBlock& block) {
  if constexpr (has_flag_lanes(COMPILED_SET, LaneWidth::BITS16)) {
    if (block.width == LaneWidth::BITS16) return fill_frame_flag_block<Vec16>(block);
  }
  fill_frame_flag_block<Vec32>(block);
}

}  // namespace
}  // namespace zelvan
