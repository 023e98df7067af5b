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
V load_unaligned(const uint8_t* from) {
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
typename V::Mask greater(V a, V b) {
  return a.v > b.v;
}
template <class V>
V select(typename V::Mask mask, V where_set, V where_clear) {
  return {mask ? where_set.v : where_clear.v};
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
// a less the chosen one.
template <class V>
V sub_choice(V a, typename V::Mask mask, const Choice<V>& choice) {
  const V chosen = {choice.clear.v ^ (mask & choice.difference.v)};
  return sub(a, chosen);
}

// Every lane moves up by one; the last lane of `below` comes in.
inline Vec32 shift_in(Vec32 below, Vec32 a) {
  return {__builtin_shufflevector(below.v, a.v, 3, 4, 5, 6)};
}

// One byte for every lane, in which flags are set one by one.
template <class V>
struct LaneFlags;
template <>
struct LaneFlags<Vec32> {
  Vec32 flags = splat<Vec32>(0);
  void set(Vec32::Mask mask, uint8_t flag) { flags.v |= mask & flag; }
  void store(uint8_t* to) const {
    typedef uint8_t Bytes __attribute__((vector_size(4)));
    const Bytes bytes = __builtin_convertvector(flags.v, Bytes);
    std::memcpy(to, &bytes, sizeof bytes);
  }
};

// A register has one piece of 16 bytes only.
template <class V>
V load_pieces(const uint8_t* const* from, int, int64_t offset) {
  return load_unaligned<V>(from[0] + offset);
}
// Units of BYTES from the lower (upper) halves of both, in turn.
template <int BYTES>
Vec32 interleave_low(Vec32 a, Vec32 b) {
  if constexpr (BYTES == 4) return {__builtin_shufflevector(a.v, b.v, 0, 4, 1, 5)};
  if constexpr (BYTES == 8) return {__builtin_shufflevector(a.v, b.v, 0, 1, 4, 5)};
}
template <int BYTES>
Vec32 interleave_high(Vec32 a, Vec32 b) {
  if constexpr (BYTES == 4) return {__builtin_shufflevector(a.v, b.v, 2, 6, 3, 7)};
  if constexpr (BYTES == 8) return {__builtin_shufflevector(a.v, b.v, 2, 3, 6, 7)};
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
