// The recurrence of move flags. Included by kernel objects after their lanes; everything is local to them.
#pragma once

#include "align/cell_flags.h"
#include "align/trace/flag_kernel.h"

namespace zelvan {
namespace {

constexpr int LANES = vector_bytes(COMPILED_SET) / lane_bytes(LaneWidth::BITS32);
constexpr int VECTORS = FLAG_ROWS / LANES;

// 0 in the rows that have reached query position 1: at step s, row r reads entry FLAG_ROWS + r - s.
constexpr int32_t NOT_REACHED[2 * FLAG_ROWS] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                                1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};

inline Vec32 flag_where(Vec32::Mask mask, uint32_t flag) {
  return masked(mask, splat<Vec32>(flag));
}

// Scores by step and row: at step s, row r stands at query position s - r.
void slant_scores(const FlagBlock& block) {
  const int32_t steps = block.positions + FLAG_ROWS;
  for (int32_t r = 0; r < FLAG_ROWS; ++r) {
    int32_t* to = block.slanted_scores + r;
    for (int32_t s = 0; s <= r; ++s) to[s * FLAG_ROWS] = FORBIDDEN;
    const int32_t* scores = block.scores[r] - r;
    for (int32_t s = r + 1; s <= r + block.positions; ++s) to[s * FLAG_ROWS] = scores[s];
    for (int32_t s = r + block.positions + 1; s < steps; ++s) to[s * FLAG_ROWS] = FORBIDDEN;
  }
}

void straighten_flags(const FlagBlock& block) {
  for (int32_t r = 0; r < block.rows; ++r) {
    uint8_t* to = block.flags[r];
    const uint8_t* from = block.slanted_flags + r * (FLAG_ROWS + 1);
    for (int32_t i = 1; i <= block.positions; ++i) to[i] = from[i * FLAG_ROWS];
  }
}

inline void run_flag_kernel(const FlagBlock& block) {
  slant_scores(block);
  const Vec32 zero = splat<Vec32>(0);
  const Vec32 boundary_gap = sub(zero, splat<Vec32>(static_cast<uint32_t>(block.open[-1])));
  Vec32 h[VECTORS];         // cells of the previous step
  Vec32 gap_down[VECTORS];  // their values less a gap to the next row
  Vec32 gap_left[VECTORS];  // and less a gap to the next query position
  Vec32 corner[VECTORS];    // cells above those of the previous step
  Vec32 best[VECTORS];
  Vec32 extend[VECTORS], open[VECTORS];  // penalties of this step's query positions
  for (int v = 0; v < VECTORS; ++v) {
    h[v] = corner[v] = best[v] = zero;
    gap_down[v] = gap_left[v] = boundary_gap;
    extend[v] = load_unaligned<Vec32>(block.extend - 1 + v * LANES);
    open[v] = load_unaligned<Vec32>(block.open - 1 + v * LANES);
  }
  for (int32_t s = 1; s < block.positions + FLAG_ROWS; ++s) {
    Vec32 up[VECTORS], above[VECTORS];
    for (int v = 0; v < VECTORS; ++v) {
      up[v] = shift_in(v > 0 ? gap_down[v - 1] : splat<Vec32>(static_cast<uint32_t>(block.gaps_down[s])),
                       gap_down[v]);
      above[v] = shift_in(v > 0 ? h[v - 1] : splat<Vec32>(static_cast<uint32_t>(block.values[s])), h[v]);
    }
    for (int v = 0; v < VECTORS; ++v) {
      const int32_t first = v * LANES;  // row of the first lane
      const Vec32 left = gap_left[v];
      const Vec32 diagonal =
          add(corner[v], load_unaligned<Vec32>(block.slanted_scores + s * FLAG_ROWS + first));
      corner[v] = above[v];
      h[v] = max(max(max(diagonal, zero), left), up[v]);
      const auto is_up = equal(h[v], up[v]), is_left = equal(h[v], left);
      const Vec32 moves =
          add(add(flag_where(equal(h[v], diagonal), MOVE_DIAGONAL), flag_where(is_up, MOVE_UP)),
              flag_where(is_left, MOVE_LEFT));
      store_bytes(block.slanted_flags + s * FLAG_ROWS + first,
                  add(moves, flag_where(equal(h[v], zero), CELL_ZERO)));
      gap_down[v] = sub(h[v], select(is_up, extend[v], open[v]));
      extend[v] = load_unaligned<Vec32>(block.extend - s - 1 + first);
      open[v] = load_unaligned<Vec32>(block.open - s - 1 + first);
      gap_left[v] = sub(h[v], select(is_left, extend[v], open[v]));
      if (s < FLAG_ROWS) {
        const auto reached = equal(load_unaligned<Vec32>(NOT_REACHED + FLAG_ROWS + first - s), zero);
        h[v] = select(reached, h[v], zero);
        gap_left[v] = select(reached, gap_left[v], boundary_gap);
      }
      best[v] = max(best[v], h[v]);
    }
    if (s >= FLAG_ROWS) {
      block.values[s - FLAG_ROWS + 1] = last_lane(h[VECTORS - 1]);
      block.gaps_down[s - FLAG_ROWS + 1] = last_lane(gap_down[VECTORS - 1]);
    }
  }
  for (int v = 0; v < VECTORS; ++v) store(reinterpret_cast<uint8_t*>(block.best + v * LANES), best[v]);
  straighten_flags(block);
}

}  // namespace
}  // namespace zelvan
