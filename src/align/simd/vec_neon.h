// NEON registers of 64-bit ARM processors as lanes of 8, 16 and 32 bits. Included by kernel objects only, to
// which all is local.
#pragma once

#include <arm_neon.h>

#include <cstring>

#include "align/simd/instruction_set.h"

namespace zelvan {
namespace {

constexpr InstructionSet COMPILED_SET = InstructionSet::NEON;

template <LaneWidth W, class REGISTER, class MASK>
struct Vec {
  static constexpr LaneWidth WIDTH = W;
  using Mask = MASK;  // all bits of a lane are set or none
  REGISTER v;
};
using Vec8 = Vec<LaneWidth::BITS8, int8x16_t, uint8x16_t>;
using Vec16 = Vec<LaneWidth::BITS16, int16x8_t, uint16x8_t>;
using Vec32 = Vec<LaneWidth::BITS32, int32x4_t, uint32x4_t>;

template <class V>
V load_unaligned(const uint8_t* from) {
  V a;
  std::memcpy(&a.v, from, sizeof a.v);
  return a;
}
template <class V>
V load(const uint8_t* from) {
  return load_unaligned<V>(from);
}
template <class V>
typename V::Mask load_mask(const uint8_t* from) {
  return (typename V::Mask)load<V>(from).v;
}
template <class V>
void store(uint8_t* to, V a) {
  std::memcpy(to, &a.v, sizeof a.v);
}
template <class V>
V splat(uint32_t pattern) {
  const uint32x4_t all = vdupq_n_u32(pattern);
  V a;
  std::memcpy(&a.v, &all, sizeof a.v);
  return a;
}

inline Vec8 add(Vec8 a, Vec8 b) {
  return {vqaddq_s8(a.v, b.v)};
}
inline Vec8 sub(Vec8 a, Vec8 b) {
  return {vqsubq_s8(a.v, b.v)};
}
inline Vec8 max(Vec8 a, Vec8 b) {
  return {vmaxq_s8(a.v, b.v)};
}
inline uint8x16_t equal(Vec8 a, Vec8 b) {
  return vceqq_s8(a.v, b.v);
}
inline Vec8 select(uint8x16_t mask, Vec8 where_set, Vec8 where_clear) {
  return {vbslq_s8(mask, where_set.v, where_clear.v)};
}

inline Vec16 add(Vec16 a, Vec16 b) {
  return {vqaddq_s16(a.v, b.v)};
}
inline Vec16 sub(Vec16 a, Vec16 b) {
  return {vqsubq_s16(a.v, b.v)};
}
inline Vec16 max(Vec16 a, Vec16 b) {
  return {vmaxq_s16(a.v, b.v)};
}
inline uint16x8_t equal(Vec16 a, Vec16 b) {
  return vceqq_s16(a.v, b.v);
}
inline uint16x8_t greater(Vec16 a, Vec16 b) {
  return vcgtq_s16(a.v, b.v);
}
inline Vec16 select(uint16x8_t mask, Vec16 where_set, Vec16 where_clear) {
  return {vbslq_s16(mask, where_set.v, where_clear.v)};
}

inline Vec32 add(Vec32 a, Vec32 b) {
  return {vaddq_s32(a.v, b.v)};
}
inline Vec32 sub(Vec32 a, Vec32 b) {
  return {vsubq_s32(a.v, b.v)};
}
inline Vec32 max(Vec32 a, Vec32 b) {
  return {vmaxq_s32(a.v, b.v)};
}
inline uint32x4_t equal(Vec32 a, Vec32 b) {
  return vceqq_s32(a.v, b.v);
}
inline uint32x4_t greater(Vec32 a, Vec32 b) {
  return vcgtq_s32(a.v, b.v);
}
inline Vec32 select(uint32x4_t mask, Vec32 where_set, Vec32 where_clear) {
  return {vbslq_s32(mask, where_set.v, where_clear.v)};
}

// One of two vectors in every lane, chosen again and again.
template <class V>
struct Choice {
  V set, clear;
};
template <class V>
Choice<V> choice_of(V where_set, V where_clear) {
  return {where_set, where_clear};
}
// a less the chosen one.
template <class V>
V sub_choice(V a, typename V::Mask mask, const Choice<V>& choice) {
  return sub(a, select(mask, choice.set, choice.clear));
}

// Every lane moves up by one; the last lane of `below` comes in.
inline Vec16 shift_in(Vec16 below, Vec16 a) {
  return {vextq_s16(below.v, a.v, 7)};
}
inline Vec32 shift_in(Vec32 below, Vec32 a) {
  return {vextq_s32(below.v, a.v, 3)};
}

// One byte for every lane, in which flags are set one by one.
template <class V>
struct LaneFlags;
template <>
struct LaneFlags<Vec16> {
  uint16x8_t v = vdupq_n_u16(0);
  void set(uint16x8_t mask, uint8_t flag) { v = vorrq_u16(v, vandq_u16(mask, vdupq_n_u16(flag))); }
  void store(uint8_t* to) const { vst1_u8(to, vmovn_u16(v)); }
};
template <>
struct LaneFlags<Vec32> {
  uint32x4_t v = vdupq_n_u32(0);
  void set(uint32x4_t mask, uint8_t flag) { v = vorrq_u32(v, vandq_u32(mask, vdupq_n_u32(flag))); }
  void store(uint8_t* to) const {
    const uint16x4_t words = vmovn_u32(v);
    const uint8x8_t bytes = vmovn_u16(vcombine_u16(words, words));
    std::memcpy(to, &bytes, 4);
  }
};

// A register has one piece of 16 bytes only.
template <class V>
V load_pieces(const uint8_t* const* from, int, int64_t offset) {
  return load_unaligned<V>(from[0] + offset);
}
// Units of BYTES from the lower (upper) halves of both, in turn.
template <int BYTES, class V>
V interleave_low(V a, V b) {
  using Lanes = decltype(a.v);
  if constexpr (BYTES == 2) return {(Lanes)vzip1q_s16((int16x8_t)a.v, (int16x8_t)b.v)};
  if constexpr (BYTES == 4) return {(Lanes)vzip1q_s32((int32x4_t)a.v, (int32x4_t)b.v)};
  if constexpr (BYTES == 8) return {(Lanes)vzip1q_s64((int64x2_t)a.v, (int64x2_t)b.v)};
}
template <int BYTES, class V>
V interleave_high(V a, V b) {
  using Lanes = decltype(a.v);
  if constexpr (BYTES == 2) return {(Lanes)vzip2q_s16((int16x8_t)a.v, (int16x8_t)b.v)};
  if constexpr (BYTES == 4) return {(Lanes)vzip2q_s32((int32x4_t)a.v, (int32x4_t)b.v)};
  if constexpr (BYTES == 8) return {(Lanes)vzip2q_s64((int64x2_t)a.v, (int64x2_t)b.v)};
}

// The residues of some columns, made ready for look-ups in a score row: a row of 32 bytes is one table.
template <class V, int COLUMNS>
struct Codes;

inline uint8x16x2_t load_table(const uint8_t* from) {
  return {{vld1q_u8(from), vld1q_u8(from + 16)}};
}

template <int COLUMNS>
struct Codes<Vec8, COLUMNS> {
  static constexpr int ROW_BYTES = ROW_CODES;
  uint8x16_t index[COLUMNS];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < COLUMNS; ++k) index[k] = vld1q_u8(residues + 16 * k);
  }
  void look_up(const uint8_t* row, Vec8* out) const {
    const uint8x16x2_t scores = load_table(row);
    for (int k = 0; k < COLUMNS; ++k) out[k].v = vreinterpretq_s8_u8(vqtbl2q_u8(scores, index[k]));
  }
};

// Two columns share one index: the low and the high bytes of their scores are looked up apart, then joined.
template <int COLUMNS>
struct Codes<Vec16, COLUMNS> {
  static_assert(COLUMNS % 2 == 0);
  static constexpr int PAIRS = COLUMNS / 2;
  static constexpr int ROW_BYTES = 2 * ROW_CODES;
  uint8x16_t index[PAIRS];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < PAIRS; ++k) index[k] = vld1q_u8(residues + 16 * k);
  }
  void look_up(const uint8_t* row, Vec16* out) const {
    const uint8x16x2_t low_bytes = load_table(row), high_bytes = load_table(row + ROW_CODES);
    for (int k = 0; k < PAIRS; ++k) {
      const uint8x16_t low = vqtbl2q_u8(low_bytes, index[k]), high = vqtbl2q_u8(high_bytes, index[k]);
      out[2 * k].v = vreinterpretq_s16_u8(vzip1q_u8(low, high));
      out[2 * k + 1].v = vreinterpretq_s16_u8(vzip2q_u8(low, high));
    }
  }
};

template <int COLUMNS>
struct Codes<Vec32, COLUMNS> {
  static constexpr int ROW_BYTES = 4 * ROW_CODES;
  const uint8_t* codes;
  explicit Codes(const uint8_t* residues) : codes(residues) {}
  void look_up(const uint8_t* row, Vec32* out) const {
    const int32_t* scores = reinterpret_cast<const int32_t*>(row);
    for (int k = 0; k < COLUMNS; ++k) {
      const uint8_t* c = codes + 4 * k;
      const int32x4_t looked_up = {scores[c[0]], scores[c[1]], scores[c[2]], scores[c[3]]};
      out[k].v = looked_up;
    }
  }
};

}  // namespace
}  // namespace zelvan
