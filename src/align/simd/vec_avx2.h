// AVX2 registers as lanes of 8, 16 and 32 bits. Included by kernel objects only, to which all is local.
#pragma once

#include <immintrin.h>

#include "align/simd/instruction_set.h"

namespace zelvan {
namespace {

constexpr InstructionSet COMPILED_SET = InstructionSet::AVX2;
using Register = __m256i;

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
  return {_mm256_load_si256(reinterpret_cast<const __m256i*>(from))};
}
template <class V>
V load_unaligned(const uint8_t* from) {
  return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from))};
}
template <class V>
void store(uint8_t* to, V a) {
  _mm256_store_si256(reinterpret_cast<__m256i*>(to), a.v);
}
template <class V>
V splat(uint32_t pattern) {
  return {_mm256_set1_epi32(static_cast<int>(pattern))};
}
template <class V>
V select(Register mask, V where_set, V where_clear) {
  return {_mm256_blendv_epi8(where_clear.v, where_set.v, mask)};
}

inline Vec8 add(Vec8 a, Vec8 b) {
  return {_mm256_adds_epi8(a.v, b.v)};
}
inline Vec8 sub(Vec8 a, Vec8 b) {
  return {_mm256_subs_epi8(a.v, b.v)};
}
inline Vec8 max(Vec8 a, Vec8 b) {
  return {_mm256_max_epi8(a.v, b.v)};
}
inline Register equal(Vec8 a, Vec8 b) {
  return _mm256_cmpeq_epi8(a.v, b.v);
}

inline Vec16 add(Vec16 a, Vec16 b) {
  return {_mm256_adds_epi16(a.v, b.v)};
}
inline Vec16 sub(Vec16 a, Vec16 b) {
  return {_mm256_subs_epi16(a.v, b.v)};
}
inline Vec16 max(Vec16 a, Vec16 b) {
  return {_mm256_max_epi16(a.v, b.v)};
}
inline Register equal(Vec16 a, Vec16 b) {
  return _mm256_cmpeq_epi16(a.v, b.v);
}
inline Register greater(Vec16 a, Vec16 b) {
  return _mm256_cmpgt_epi16(a.v, b.v);
}

inline Vec32 add(Vec32 a, Vec32 b) {
  return {_mm256_add_epi32(a.v, b.v)};
}
inline Vec32 sub(Vec32 a, Vec32 b) {
  return {_mm256_sub_epi32(a.v, b.v)};
}
inline Vec32 max(Vec32 a, Vec32 b) {
  return {_mm256_max_epi32(a.v, b.v)};
}
inline Register equal(Vec32 a, Vec32 b) {
  return _mm256_cmpeq_epi32(a.v, b.v);
}
inline Register greater(Vec32 a, Vec32 b) {
  return _mm256_cmpgt_epi32(a.v, b.v);
}

// Every lane moves up by one; the last lane of `below` comes in.
template <class V>
V shift_in(V below, V a) {
  const __m256i halves = _mm256_permute2x128_si256(below.v, a.v, 0x21);  // the upper of below, the lower of a
  return {_mm256_alignr_epi8(a.v, halves, 16 - lane_bytes(V::WIDTH))};
}
// The lowest byte of every lane, for lanes of 0..127.
inline void store_bytes(uint8_t* to, Vec16 a) {
  const __m128i bytes = _mm_packs_epi16(_mm256_castsi256_si128(a.v), _mm256_extracti128_si256(a.v, 1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
}
inline void store_bytes(uint8_t* to, Vec32 a) {
  const __m128i words = _mm_packs_epi32(_mm256_castsi256_si128(a.v), _mm256_extracti128_si256(a.v, 1));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packs_epi16(words, words));
}

// Both halves of 16 bytes from a place of their own: half q from from[q * step] + offset.
template <class V>
V load_pieces(const uint8_t* const* from, int step, int64_t offset) {
  return {_mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(from[step] + offset),
                              reinterpret_cast<const __m128i*>(from[0] + offset))};
}
// Units of BYTES from the lower (upper) parts of both, in turn, in either half.
template <int BYTES, class V>
V interleave_low(V a, V b) {
  if constexpr (BYTES == 2) return {_mm256_unpacklo_epi16(a.v, b.v)};
  if constexpr (BYTES == 4) return {_mm256_unpacklo_epi32(a.v, b.v)};
  if constexpr (BYTES == 8) return {_mm256_unpacklo_epi64(a.v, b.v)};
}
template <int BYTES, class V>
V interleave_high(V a, V b) {
  if constexpr (BYTES == 2) return {_mm256_unpackhi_epi16(a.v, b.v)};
  if constexpr (BYTES == 4) return {_mm256_unpackhi_epi32(a.v, b.v)};
  if constexpr (BYTES == 8) return {_mm256_unpackhi_epi64(a.v, b.v)};
}

inline Register and_bits(Register a, Register b) {
  return _mm256_and_si256(a, b);
}
inline Register or_bits(Register a, Register b) {
  return _mm256_or_si256(a, b);
}
inline Register xor_bits(Register a, Register b) {
  return _mm256_xor_si256(a, b);
}
inline Register splat_byte(char value) {
  return _mm256_set1_epi8(value);
}
inline Register add_unsigned_bytes(Register a, Register b) {
  return _mm256_adds_epu8(a, b);
}
inline Register sub_bytes(Register a, Register b) {
  return _mm256_sub_epi8(a, b);
}
inline Register shuffle_bytes(Register table, Register index) {
  return _mm256_shuffle_epi8(table, index);
}
inline Register interleave_lower(Register a, Register b) {
  return _mm256_unpacklo_epi8(a, b);
}
inline Register interleave_upper(Register a, Register b) {
  return _mm256_unpackhi_epi8(a, b);
}
// 16 bytes in both halves: byte shuffles work in halves.
inline Register load_table(const uint8_t* from) {
  return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(from)));
}
// The codes of two columns of 16 lanes, in the order from which interleaving, half by half, makes lanes.
inline Register load_column_pair(const uint8_t* residues) {
  const __m128i* columns = reinterpret_cast<const __m128i*>(residues);
  const __m128i first = _mm_load_si128(columns);
  const __m128i second = _mm_load_si128(columns + 1);
  return _mm256_set_m128i(_mm_unpackhi_epi64(first, second), _mm_unpacklo_epi64(first, second));
}

}  // namespace
}  // namespace zelvan

#include "align/simd/vec_byte_shuffle.h"

namespace zelvan {
namespace {

template <int COLUMNS>
struct Codes<Vec32, COLUMNS> {
  static constexpr int ROW_BYTES = 4 * ROW_CODES;
  __m256i index[COLUMNS];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < COLUMNS; ++k) {
      index[k] = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(residues + 8 * k)));
    }
  }
  void look_up(const uint8_t* row, Vec32* out) const {
    for (int k = 0; k < COLUMNS; ++k) {
      out[k].v = _mm256_i32gather_epi32(reinterpret_cast<const int*>(row), index[k], 4);
    }
  }
};

}  // namespace
}  // namespace zelvan
