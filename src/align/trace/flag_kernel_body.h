// The recurrence of move flags in the compiler's own vectors of LANES cells. Included by kernel objects only;
// everything is local to them.
#pragma once

#include <cstring>

#include "align/cell_flags.h"
#include "align/trace/flag_kernel.h"

namespace zelvan {
namespace {

typedef int32_t Vec __attribute__((vector_size(4 * LANES)));
constexpr int VECTORS = FLAG_ROWS / LANES;

inline Vec load(const int32_t* from) {
  Vec v;
  std::memcpy(&v, from, sizeof v);
  return v;
}
inline Vec splat(int32_t value) {
  return Vec{} + value;
}
inline Vec max(Vec a, Vec b) {
  return a > b ? a : b;
}
inline Vec flag_where(Vec mask, int32_t flag) {
  return mask & flag;
}
inline Vec lane_numbers(int first) {
  Vec v{};
  for (int k = 0; k < LANES; ++k) v[k] = first + k;
  return v;
}

// Every lane moves up by one; the last lane of `below` comes in.
inline Vec shift_in(Vec below, Vec v) {
#if LANES == 16
  return __builtin_shufflevector(below, v, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30);
#elif LANES == 8
  return __builtin_shufflevector(below, v, 7, 8, 9, 10, 11, 12, 13, 14);
#else
  return __builtin_shufflevector(below, v, 3, 4, 5, 6);
#endif
}
inline Vec last_lane(int32_t value) {
  Vec v{};
  v[LANES - 1] = value;
  return v;
}

inline void store_bytes(uint8_t* to, Vec v) {
  typedef uint8_t Bytes __attribute__((vector_size(LANES)));
  const Bytes bytes = __builtin_convertvector(v, Bytes);
  std::memcpy(to, &bytes, sizeof bytes);
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

void run_block(const FlagBlock& block) {
  slant_scores(block);
  const Vec zero{};
  const Vec boundary_gap = zero - block.open[-1];  // what a gap from outside brings to query position 1
  Vec h[VECTORS];                                  // cells of the previous step
  Vec gap_down[VECTORS];                           // their values less a gap to the next row
  Vec gap_left[VECTORS];                           // and less a gap to the next query position
  Vec corner[VECTORS];                             // cells above those of the previous step
  Vec top[VECTORS];
  for (int v = 0; v < VECTORS; ++v) {
    h[v] = corner[v] = top[v] = zero;
    gap_down[v] = gap_left[v] = boundary_gap;
  }
  for (int32_t s = 1; s < block.positions + FLAG_ROWS; ++s) {
    Vec up[VECTORS], above[VECTORS];
    for (int v = 0; v < VECTORS; ++v) {
      up[v] = shift_in(v > 0 ? gap_down[v - 1] : last_lane(block.gaps_down[s]), gap_down[v]);
      above[v] = shift_in(v > 0 ? h[v - 1] : last_lane(block.values[s]), h[v]);
    }
    for (int v = 0; v < VECTORS; ++v) {
      const int32_t first = v * LANES;
      const Vec diagonal = corner[v] + load(block.slanted_scores + s * FLAG_ROWS + first);
      const Vec left = gap_left[v];
      corner[v] = above[v];
      h[v] = max(max(max(diagonal, up[v]), zero), left);
      const Vec is_up = h[v] == up[v], is_left = h[v] == left;
      const Vec flags = flag_where(h[v] == diagonal, MOVE_DIAGONAL) | flag_where(is_up, MOVE_UP) |
                        flag_where(is_left, MOVE_LEFT) | flag_where(h[v] == zero, CELL_ZERO);
      store_bytes(block.slanted_flags + s * FLAG_ROWS + first, flags);
      gap_down[v] = h[v] - (is_up ? load(block.extend - s + first) : load(block.open - s + first));
      gap_left[v] = h[v] - (is_left ? load(block.extend - s - 1 + first) : load(block.open - s - 1 + first));
      if (s < FLAG_ROWS) {  // rows that have not reached query position 1 yet
        const Vec outside = lane_numbers(first) >= splat(s);
        h[v] = outside ? zero : h[v];
        gap_left[v] = outside ? boundary_gap : gap_left[v];
      }
      top[v] = max(top[v], h[v]);
    }
    if (s >= FLAG_ROWS) {
      block.values[s - FLAG_ROWS + 1] = h[VECTORS - 1][LANES - 1];
      block.gaps_down[s - FLAG_ROWS + 1] = gap_down[VECTORS - 1][LANES - 1];
    }
  }
  for (int v = 0; v < VECTORS; ++v) std::memcpy(block.best + v * LANES, &top[v], sizeof top[v]);
  straighten_flags(block);
}

}  // namespace
}  // namespace zelvan
