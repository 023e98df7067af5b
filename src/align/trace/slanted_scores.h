// Lanes along a slant, and their scores: for kernels that work out target positions side by side,
// each a step behind the one before. Included by kernel objects after their lanes; everything is local to them.
#pragma once

#include <cstdint>
#include <cstring>

#include "align/simd/lanes.h"

namespace zelvan {
namespace {

// Target positions side by side: see flag_rows.
constexpr int VECTORS = 2;

// The value in every lane.
template <class V>
V all_lanes(int32_t value) {
  const auto bits = static_cast<uint32_t>(value);
  return splat<V>(V::WIDTH == LaneWidth::BITS16 ? (bits & 0xFFFFU) * 0x00010001U : bits);
}

// The lanes from an entry on.
template <class V>
V load_entries(const uint8_t* origin, int64_t entry) {
  return load_unaligned<V>(origin + entry * lane_bytes(V::WIDTH));
}

// The steps that are loaded together: lanes in 16 bytes.
template <class V>
constexpr int STRIDE = 16 / lane_bytes(V::WIDTH);

// Transposes squares of STRIDE lanes, in every piece of 16 bytes.
inline void transpose(Vec32* rows) {
  const Vec32 a = interleave_low<4>(rows[0], rows[1]), b = interleave_high<4>(rows[0], rows[1]);
  const Vec32 c = interleave_low<4>(rows[2], rows[3]), d = interleave_high<4>(rows[2], rows[3]);
  rows[0] = interleave_low<8>(a, c);
  rows[1] = interleave_high<8>(a, c);
  rows[2] = interleave_low<8>(b, d);
  rows[3] = interleave_high<8>(b, d);
}
template <class V>
void transpose(V* rows) requires(V::WIDTH == LaneWidth::BITS16) {
  V pairs[8], quads[8];
  for (int k = 0; k < 4; ++k) {
    pairs[k] = interleave_low<2>(rows[2 * k], rows[2 * k + 1]);
    pairs[4 + k] = interleave_high<2>(rows[2 * k], rows[2 * k + 1]);
  }
  for (int k = 0; k < 4; ++k) {
    quads[2 * k] = interleave_low<4>(pairs[2 * k], pairs[2 * k + 1]);
    quads[2 * k + 1] = interleave_high<4>(pairs[2 * k], pairs[2 * k + 1]);
  }
  for (int half = 0; half < 2; ++half) {
    for (int k = 0; k < 2; ++k) {
      rows[4 * half + 2 * k] = interleave_low<8>(quads[4 * half + k], quads[4 * half + 2 + k]);
      rows[4 * half + 2 * k + 1] = interleave_high<8>(quads[4 * half + k], quads[4 * half + 2 + k]);
    }
  }
}

// Loads the scores of STRIDE steps for the LANES rows whose score rows are given: lane r of out[t] is entry
// s + t of rows[r].
template <class V>
void load_slant(const uint8_t* const* rows, int32_t s, V* out) {
  for (int k = 0; k < STRIDE<V>; ++k) {
    out[k] = load_pieces<V>(rows + k, STRIDE<V>, int64_t{s} * lane_bytes(V::WIDTH));
  }
  transpose(out);
}

// What reaches each lane of `of[v]` from the target position before: the lane below of the step before, and the
// entry of step s from the row above the first one.
template <class V>
V from_above(const V* of, int v, const uint8_t* row_above, int32_t s) {
  return shift_in(v > 0 ? of[v - 1] : load_entries<V>(row_above, s - LANES<V> + 1), of[v]);
}

// Keeps the last lane of step s for the target positions of the next call.
template <class V>
void keep_last_lane(V last, uint8_t* row_above, int32_t s) {
  constexpr int BYTES = lane_bytes(V::WIDTH);
  alignas(64) uint8_t lanes[VECTOR_BYTES];
  store(lanes, last);
  std::memcpy(row_above + (s - VECTORS * LANES<V> + 1) * BYTES, lanes + VECTOR_BYTES - BYTES, BYTES);
}

}  // namespace
}  // namespace zelvan
