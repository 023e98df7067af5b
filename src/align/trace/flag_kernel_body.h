// The recurrence of move flags. Included by kernel objects after their lanes; everything is local to them.
#pragma once

#include "align/cell_flags.h"
#include "align/trace/flag_kernel.h"
#include "align/trace/slanted_scores.h"

namespace zelvan {
namespace {

template <class V>
void fill_flag_block(const FlagBlock& block) {
  constexpr int ROWS = VECTORS * LANES<V>;
  constexpr int BYTES = lane_bytes(V::WIDTH);
  constexpr bool SATURATES = V::WIDTH == LaneWidth::BITS16;
  const V zero = all_lanes<V>(SATURATES ? INT16_MIN : 0);
  const V below_high = all_lanes<V>(block.below_high);
  const uint8_t* rows[ROWS];
  for (int r = 0; r < ROWS; ++r) rows[r] = block.scores[r] - r * BYTES;
  V h[VECTORS];         // cells of the previous step
  V gap_down[VECTORS];  // their values less a gap to the next target position
  V gap_left[VECTORS];  // and less a gap to the next query position
  V corner[VECTORS];    // cells above those of the previous step
  V best[VECTORS];
  V extend[VECTORS], open[VECTORS];  // penalties of this step's query positions
  for (int v = 0; v < VECTORS; ++v) {
    // A row that has not reached the query yet stays at 0: none of its scores lifts it, and what a gap leaves
    // of 0 is not more.
    h[v] = gap_down[v] = gap_left[v] = corner[v] = best[v] = zero;
    extend[v] = load_entries<V>(block.extend, v * LANES<V> - 1);
    open[v] = load_entries<V>(block.open, v * LANES<V> - 1);
  }
  uint8_t* flags = block.flags;
  for (int32_t first = 1; first <= block.steps; first += STRIDE<V>) {
    V scores[VECTORS][STRIDE<V>];
    for (int v = 0; v < VECTORS; ++v) load_slant<V>(rows + v * LANES<V>, first, scores[v]);
    for (int t = 0; t < STRIDE<V>; ++t) {
      const int32_t s = first + t;
      V up[VECTORS], above[VECTORS];
      for (int v = 0; v < VECTORS; ++v) {
        up[v] = from_above(gap_down, v, block.gaps_down, s);
        above[v] = from_above(h, v, block.values, s);
      }
      for (int v = 0; v < VECTORS; ++v) {
        const V left = gap_left[v];
        const V diagonal = add(corner[v], scores[v][t]);
        corner[v] = above[v];
        h[v] = max(max(diagonal, up[v]), left);
        if constexpr (!SATURATES) h[v] = max(h[v], zero);
        const auto is_up = equal(h[v], up[v]), is_left = equal(h[v], left);
        LaneFlags<V> moves;
        moves.set(equal(h[v], diagonal), MOVE_DIAGONAL);
        moves.set(is_up, MOVE_UP);
        moves.set(is_left, MOVE_LEFT);
        moves.set(equal(h[v], zero), CELL_ZERO);
        moves.set(greater(h[v], below_high), CELL_HIGH);
        moves.store(flags + v * LANES<V>);
        gap_down[v] = sub(h[v], select(is_up, extend[v], open[v]));
        extend[v] = load_entries<V>(block.extend, v * LANES<V> - s - 1);
        open[v] = load_entries<V>(block.open, v * LANES<V> - s - 1);
        gap_left[v] = sub(h[v], select(is_left, extend[v], open[v]));
        best[v] = max(best[v], h[v]);
      }
      flags += ROWS;
      keep_last_lane(h[VECTORS - 1], block.values, s);
      keep_last_lane(gap_down[VECTORS - 1], block.gaps_down, s);
    }
  }
  for (int v = 0; v < VECTORS; ++v) store(block.best + v * VECTOR_BYTES, best[v]);
}

inline void run_flag_kernel(const FlagBlock& block) {
  if constexpr (has_flag_lanes(COMPILED_SET, LaneWidth::BITS16)) {
    if (block.width == LaneWidth::BITS16) return fill_flag_block<Vec16>(block);
  }
  fill_flag_block<Vec32>(block);
}

}  // namespace
}  // namespace zelvan
