// Lanes of 16 and 32 bits in the compiler's own vector types, for processors without one of the other sets.
// What is defined here every vec_<set>.h defines, and lanes of 8 bits besides: here they would overflow too
// soon to be of use, because these types have no saturating arithmetic. Score 0 is held as 0 and the lanes of
// 16 bits are trusted only up to the largest value less the highest score. Included by kernel objects only,
// to which all is local.
#pragma once

#include <cstring>

#include "align/simd/instruction_set.h"

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
  using Mask = Signed;  // all bits of a lane are set or none
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
V load_unaligned(const int32_t* from) {
  V a;
  std::memcpy(&a.v, from, sizeof a.v);
  return a;
}
template <class V>
typename V::Mask load_mask(const uint8_t* from) {
  return load<V>(from).v;
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
template <class V>
typename V::Mask equal(V a, V b) {
  return a.v == b.v;
}
template <class V>
V select(typename V::Mask mask, V where_set, V where_clear) {
  return {mask ? where_set.v : where_clear.v};
}
// The lanes where the mask is set; 0 elsewhere.
template <class V>
V masked(typename V::Mask mask, V a) {
  return {mask & a.v};
}

// One of two vectors in every lane, chosen again and again.
template <class V>
struct Choice {
  V clear, difference;
};
template <class V>
Choice<V> choice_of(V where_set, V where_clear) {
  return {where_clear, V{where_set.v ^ where_clear.v}};
}
template <class V>
V choose(typename V::Mask mask, const Choice<V>& choice) {
  return {choice.clear.v ^ (mask & choice.difference.v)};
}

// Every lane moves up by one; the last lane of `below` comes in.
inline Vec32 shift_in(Vec32 below, Vec32 a) {
  return {__builtin_shufflevector(below.v, a.v, 3, 4, 5, 6)};
}
inline int32_t last_lane(Vec32 a) {
  return a.v[3];
}
// The lowest byte of every lane.
inline void store_bytes(uint8_t* to, Vec32 a) {
  typedef uint8_t Bytes __attribute__((vector_size(4)));
  const Bytes bytes = __builtin_convertvector(a.v, Bytes);
  std::memcpy(to, &bytes, sizeof bytes);
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
