// SSE4.1 registers as lanes of 8, 16 and 32 bits. Included by kernel objects only, to which all is local.
#pragma once

#include <immintrin.h>

#include <cstring>

#include "align/simd/instruction_set.h"

namespace zelvan {
namespace {

constexpr InstructionSet COMPILED_SET = InstructionSet::SSE41;
using Register = __m128i;

template <LaneWidth W>
struct Vec {
  static constexpr LaneWidth WIDTH = W;
  using Mask = Register;  // all bits of a lane are set or none
  Register v;
};
using Vec8 = Vec<LaneWidth::BITS8>;
using Vec16 = Vec<LaneWidth::BITS16>;
using Vec32 = Vec<LaneWidth::BITS32>;

template <class V>
V load(const uint8_t* from) {
  return {_mm_load_si128(reinterpret_cast<const __m128i*>(from))};
}
template <class V>
V load_unaligned(const uint8_t* from) {
  return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))};
}
template <class V>
void store(uint8_t* to, V a) {
  _mm_store_si128(reinterpret_cast<__m128i*>(to), a.v);
}
template <class V>
V splat(uint32_t pattern) {
  return {_mm_set1_epi32(static_cast<int>(pattern))};
}
template <class V>
V select(Register mask, V where_set, V where_clear) {
  return {_mm_blendv_epi8(where_clear.v, where_set.v, mask)};
}

inline Vec8 add(Vec8 a, Vec8 b) {
  return {_mm_adds_epi8(a.v, b.v)};
}
inline Vec8 sub(Vec8 a, Vec8 b) {
  return {_mm_subs_epi8(a.v, b.v)};
}
inline Vec8 max(Vec8 a, Vec8 b) {
  return {_mm_max_epi8(a.v, b.v)};
}
inline Register equal(Vec8 a, Vec8 b) {
  return _mm_cmpeq_epi8(a.v, b.v);
}

inline Vec16 add(Vec16 a, Vec16 b) {
  return {_mm_adds_epi16(a.v, b.v)};
}
inline Vec16 sub(Vec16 a, Vec16 b) {
  return {_mm_subs_epi16(a.v, b.v)};
}
inline Vec16 max(Vec16 a, Vec16 b) {
  return {_mm_max_epi16(a.v, b.v)};
}
inline Register equal(Vec16 a, Vec16 b) {
  return _mm_cmpeq_epi16(a.v, b.v);
}
inline Register greater(Vec16 a, Vec16 b) {
  return _mm_cmpgt_epi16(a.v, b.v);
}

inline Vec32 add(Vec32 a, Vec32 b) {
  return {_mm_add_epi32(a.v, b.v)};
}
inline Vec32 sub(Vec32 a, Vec32 b) {
  return {_mm_sub_epi32(a.v, b.v)};
}
inline Vec32 max(Vec32 a, Vec32 b) {
  return {_mm_max_epi32(a.v, b.v)};
}
inline Register equal(Vec32 a, Vec32 b) {
  return _mm_cmpeq_epi32(a.v, b.v);
}
inline Register greater(Vec32 a, Vec32 b) {
  return _mm_cmpgt_epi32(a.v, b.v);
}

// Every lane moves up by one; the last lane of `below` comes in.
template <class V>
V shift_in(V below, V a) {
  return {_mm_alignr_epi8(a.v, below.v, 16 - lane_bytes(V::WIDTH))};
}
// The lowest byte of every lane, for lanes of 0..127.
inline void store_bytes(uint8_t* to, Vec16 a) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packs_epi16(a.v, a.v));
}
inline void store_bytes(uint8_t* to, Vec32 a) {
  const __m128i words = _mm_packs_epi32(a.v, a.v);
  const int32_t bytes = _mm_cvtsi128_si32(_mm_packs_epi16(words, words));
  std::memcpy(to, &bytes, sizeof bytes);
}

// A register has one piece of 16 bytes only.
template <class V>
V load_pieces(const uint8_t* const* from, int, int64_t offset) {
  return load_unaligned<V>(from[0] + offset);
}
// Units of BYTES from the lower (upper) halves of both, in turn.
template <int BYTES, class V>
V interleave_low(V a, V b) {
  if constexpr (BYTES == 2) return {_mm_unpacklo_epi16(a.v, b.v)};
  if constexpr (BYTES == 4) return {_mm_unpacklo_epi32(a.v, b.v)};
  if constexpr (BYTES == 8) return {_mm_unpacklo_epi64(a.v, b.v)};
}
template <int BYTES, class V>
V interleave_high(V a, V b) {
  if constexpr (BYTES == 2) return {_mm_unpackhi_epi16(a.v, b.v)};
  if constexpr (BYTES == 4) return {_mm_unpackhi_epi32(a.v, b.v)};
  if constexpr (BYTES == 8) return {_mm_unpackhi_epi64(a.v, b.v)};
}

inline Register and_bits(Register a, Register b) {
  return _mm_and_si128(a, b);
}
inline Register or_bits(Register a, Register b) {
  return _mm_or_si128(a, b);
}
inline Register xor_bits(Register a, Register b) {
  return _mm_xor_si128(a, b);
}
inline Register splat_byte(char value) {
  return _mm_set1_epi8(value);
}
inline Register add_unsigned_bytes(Register a, Register b) {
  return _mm_adds_epu8(a, b);
}
inline Register sub_bytes(Register a, Register b) {
  return _mm_sub_epi8(a, b);
}
inline Register shuffle_bytes(Register table, Register index) {
  return _mm_shuffle_epi8(table, index);
}
inline Register interleave_lower(Register a, Register b) {
  return _mm_unpacklo_epi8(a, b);
}
inline Register interleave_upper(Register a, Register b) {
  return _mm_unpackhi_epi8(a, b);
}
inline Register load_table(const uint8_t* from) {
  return _mm_load_si128(reinterpret_cast<const __m128i*>(from));
}
// The codes of two columns of 8 lanes.
inline Register load_column_pair(const uint8_t* residues) {
  return load_table(residues);
}

}  // namespace
}  // namespace zelvan

#include "align/simd/vec_byte_shuffle.h"

namespace zelvan {
namespace {

template <int COLUMNS>
struct Codes<Vec32, COLUMNS> {
  static constexpr int ROW_BYTES = 4 * ROW_CODES;
  const uint8_t* codes;
  explicit Codes(const uint8_t* residues) : codes(residues) {}
  void look_up(const uint8_t* row, Vec32* out) const {
    const int* scores = reinterpret_cast<const int*>(row);
    for (int k = 0; k < COLUMNS; ++k) {
      const uint8_t* c = codes + 4 * k;
      out[k].v = _mm_setr_epi32(scores[c[0]], scores[c[1]], scores[c[2]], scores[c[3]]);
    }
  }
};

}  // namespace
}  // namespace zelvan
