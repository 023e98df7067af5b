// Lanes of 16 and 32 bits in the compiler's own vector types, for processors without one of the other sets.
// These types have no saturating arithmetic, so that score 0 is held as 0 and the lanes of 16 bits are trusted
// only up to the largest value less the highest score. Lanes of 8 bits would overflow too soon to be of use.
// Everything is local to the kernel object that includes this.
#pragma once

#include <cstring>

#include "align/scan/scan_kernel.h"

namespace zelvan {
namespace {

constexpr InstructionSet COMPILED_SET = InstructionSet::PORTABLE;

// Sums are taken without sign, where running over has a defined result.
template <LaneWidth W, class LANE, class UNSIGNED_LANE>
struct Vec {
  static constexpr LaneWidth WIDTH = W;
  using Lane = LANE;
  typedef LANE Signed __attribute__((vector_size(16), may_alias));
  typedef UNSIGNED_LANE Unsigned __attribute__((vector_size(16)));
  Signed v;
};
using Vec16 = Vec<LaneWidth::BITS16, int16_t, uint16_t>;
using Vec32 = Vec<LaneWidth::BITS32, int32_t, uint32_t>;
struct Vec8;  // none

template <class V>
V load(const uint8_t* from) {
  return {*reinterpret_cast<const typename V::Signed*>(from)};
}
template <class V>
void store(uint8_t* to, V a) {
  *reinterpret_cast<typename V::Signed*>(to) = a.v;
}
template <class V>
V splat(uint32_t pattern) {
  const Vec32::Unsigned all = {pattern, pattern, pattern, pattern};
  V a;
  std::memcpy(&a.v, &all, sizeof a.v);
  return a;
}
template <class V>
V select(V mask, V where_set, V where_clear) {
  return {(mask.v & where_set.v) | (~mask.v & where_clear.v)};
}
template <class V>
V add(V a, V b) {
  return {(typename V::Signed)((typename V::Unsigned)a.v + (typename V::Unsigned)b.v)};
}
template <class V>
V sub(V a, V b) {
  return {(typename V::Signed)((typename V::Unsigned)a.v - (typename V::Unsigned)b.v)};
}
template <class V>
V max(V a, V b) {
  return {a.v > b.v ? a.v : b.v};
}

// The gap value that a cell hands on, as in vec_byte_shuffle.h.
template <class V>
V carry(V cell, V gap, V open, V change) {
  return sub(cell, V{open.v ^ ((cell.v == gap.v) & change.v)});
}

// The residues of some columns, looked up one by one.
template <class V, int COLUMNS>
struct Codes {
  using Lane = typename V::Lane;
  static constexpr int LANES = sizeof(V) / sizeof(Lane);
  static constexpr int ROW_BYTES = ROW_CODES * static_cast<int>(sizeof(Lane));
  const uint8_t* codes;
  explicit Codes(const uint8_t* residues) : codes(residues) {}
  void look_up(const uint8_t* row, V* out) const {
    for (int k = 0; k < COLUMNS; ++k) {
      for (int lane = 0; lane < LANES; ++lane) {
        Lane score;
        std::memcpy(&score, row + codes[k * LANES + lane] * sizeof score, sizeof score);
        out[k].v[lane] = score;
      }
    }
  }
};

}  // namespace
}  // namespace zelvan
