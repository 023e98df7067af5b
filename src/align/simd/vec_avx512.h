// AVX-512 registers (with the byte, word and vector-length instructions) as lanes of 8, 16 and 32 bits. Included by
// kernel objects only, to which all is local.
#pragma once

#include <immintrin.h>

#include "align/simd/instruction_set.h"

namespace zelvan {
namespace {

#if defined(__AVX512VBMI__)
constexpr InstructionSet COMPILED_SET = InstructionSet::AVX512VBMI;
#else
constexpr InstructionSet COMPILED_SET = InstructionSet::AVX512;
#endif

template <LaneWidth W, class MASK>
struct Vec {
  static constexpr LaneWidth WIDTH = W;
  using Mask = MASK;  // one bit for each lane
  __m512i v;
};
using Vec8 = Vec<LaneWidth::BITS8, __mmask64>;
using Vec16 = Vec<LaneWidth::BITS16, __mmask32>;
using Vec32 = Vec<LaneWidth::BITS32, __mmask16>;

template <class V>
V load(const uint8_t* from) {
  return {_mm512_load_si512(from)};
}
template <class V>
V load_unaligned(const uint8_t* from) {
  return {_mm512_loadu_si512(from)};
}
template <class V>
void store(uint8_t* to, V a) {
  _mm512_store_si512(to, a.v);
}
template <class V>
V splat(uint32_t pattern) {
  return {_mm512_set1_epi32(static_cast<int>(pattern))};
}
inline Vec8 add(Vec8 a, Vec8 b) {
  return {_mm512_adds_epi8(a.v, b.v)};
}
inline Vec8 sub(Vec8 a, Vec8 b) {
  return {_mm512_subs_epi8(a.v, b.v)};
}
inline Vec8 max(Vec8 a, Vec8 b) {
  return {_mm512_max_epi8(a.v, b.v)};
}
inline __mmask64 equal(Vec8 a, Vec8 b) {
  return _mm512_cmpeq_epi8_mask(a.v, b.v);
}
inline Vec8 select(__mmask64 mask, Vec8 where_set, Vec8 where_clear) {
  return {_mm512_mask_blend_epi8(mask, where_clear.v, where_set.v)};
}

inline Vec16 add(Vec16 a, Vec16 b) {
  return {_mm512_adds_epi16(a.v, b.v)};
}
inline Vec16 sub(Vec16 a, Vec16 b) {
  return {_mm512_subs_epi16(a.v, b.v)};
}
inline Vec16 max(Vec16 a, Vec16 b) {
  return {_mm512_max_epi16(a.v, b.v)};
}
inline __mmask32 equal(Vec16 a, Vec16 b) {
  return _mm512_cmpeq_epi16_mask(a.v, b.v);
}
inline __mmask32 greater(Vec16 a, Vec16 b) {
  return _mm512_cmpgt_epi16_mask(a.v, b.v);
}
inline Vec16 select(__mmask32 mask, Vec16 where_set, Vec16 where_clear) {
  return {_mm512_mask_blend_epi16(mask, where_clear.v, where_set.v)};
}

inline Vec32 add(Vec32 a, Vec32 b) {
  return {_mm512_add_epi32(a.v, b.v)};
}
inline Vec32 sub(Vec32 a, Vec32 b) {
  return {_mm512_sub_epi32(a.v, b.v)};
}
inline Vec32 max(Vec32 a, Vec32 b) {
  return {_mm512_max_epi32(a.v, b.v)};
}
inline __mmask16 equal(Vec32 a, Vec32 b) {
  return _mm512_cmpeq_epi32_mask(a.v, b.v);
}
inline __mmask16 greater(Vec32 a, Vec32 b) {
  return _mm512_cmpgt_epi32_mask(a.v, b.v);
}
inline Vec32 select(__mmask16 mask, Vec32 where_set, Vec32 where_clear) {
  return {_mm512_mask_blend_epi32(mask, where_clear.v, where_set.v)};
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

// a less the chosen one. What is left where the mask is clear does not wait for the mask.
inline Vec8 sub_choice(Vec8 a, __mmask64 mask, const Choice<Vec8>& choice) {
  return {_mm512_mask_subs_epi8(sub(a, choice.clear).v, mask, a.v, choice.set.v)};
}
inline Vec16 sub_choice(Vec16 a, __mmask32 mask, const Choice<Vec16>& choice) {
  return {_mm512_mask_subs_epi16(sub(a, choice.clear).v, mask, a.v, choice.set.v)};
}
inline Vec32 sub_choice(Vec32 a, __mmask16 mask, const Choice<Vec32>& choice) {
  return {_mm512_mask_sub_epi32(sub(a, choice.clear).v, mask, a.v, choice.set.v)};
}

// A mask from lanes whose bits are all set or all clear.
template <class V>
typename V::Mask load_mask(const uint8_t* from) {
  return static_cast<typename V::Mask>(~equal(load<V>(from), splat<V>(0)));
}

// Every lane moves up by one; the last lane of `below` comes in.
inline Vec32 shift_in(Vec32 below, Vec32 a) {
  return {_mm512_alignr_epi32(a.v, below.v, 15)};
}
inline Vec16 shift_in(Vec16 below, Vec16 a) {
  const __m512i quarters = _mm512_alignr_epi32(a.v, below.v, 12);  // the last of below, then those of a
  return {_mm512_alignr_epi8(a.v, quarters, 14)};
}

// One byte for every lane, in which flags are set one by one.
template <class V>
struct LaneFlags;
template <>
struct LaneFlags<Vec16> {
  __m256i v = _mm256_setzero_si256();
  void set(__mmask32 mask, uint8_t flag) {
    v = _mm256_mask_add_epi8(v, mask, v, _mm256_set1_epi8(static_cast<char>(flag)));
  }
  void store(uint8_t* to) const { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), v); }
};
template <>
struct LaneFlags<Vec32> {
  __m128i v = _mm_setzero_si128();
  void set(__mmask16 mask, uint8_t flag) {
    v = _mm_mask_add_epi8(v, mask, v, _mm_set1_epi8(static_cast<char>(flag)));
  }
  void store(uint8_t* to) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v); }
};

// Every quarter of 16 bytes from a place of its own: quarter q from from[q * step] + offset.
template <class V>
V load_pieces(const uint8_t* const* from, int step, int64_t offset) {
  const auto piece = [&](int q) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from[q * step] + offset));
  };
  __m512i v = _mm512_castsi128_si512(piece(0));
  v = _mm512_inserti32x4(v, piece(1), 1);
  v = _mm512_inserti32x4(v, piece(2), 2);
  return {_mm512_inserti32x4(v, piece(3), 3)};
}
// Units of BYTES from the lower (upper) halves of both, in turn, in every quarter.
template <int BYTES, class V>
V interleave_low(V a, V b) {
  if constexpr (BYTES == 2) return {_mm512_unpacklo_epi16(a.v, b.v)};
  if constexpr (BYTES == 4) return {_mm512_unpacklo_epi32(a.v, b.v)};
  if constexpr (BYTES == 8) return {_mm512_unpacklo_epi64(a.v, b.v)};
}
template <int BYTES, class V>
V interleave_high(V a, V b) {
  if constexpr (BYTES == 2) return {_mm512_unpackhi_epi16(a.v, b.v)};
  if constexpr (BYTES == 4) return {_mm512_unpackhi_epi32(a.v, b.v)};
  if constexpr (BYTES == 8) return {_mm512_unpackhi_epi64(a.v, b.v)};
}

// The residues of some columns, made ready for look-ups in a score row.
template <class V, int COLUMNS>
struct Codes;

#if defined(__AVX512VBMI__)
template <int COLUMNS>
struct Codes<Vec8, COLUMNS> {
  static constexpr int ROW_BYTES = ROW_CODES;
  __m512i index[COLUMNS];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < COLUMNS; ++k) index[k] = _mm512_load_si512(residues + 64 * k);
  }
  void look_up(const uint8_t* row, Vec8* out) const {
    const __m256i scores = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(row));
    const __m512i table = _mm512_broadcast_i64x4(scores);
    for (int k = 0; k < COLUMNS; ++k) out[k].v = _mm512_permutexvar_epi8(index[k], table);
  }
};
#else
// A byte shuffle reads tables of 16 entries and gives 0 where an index has its top bit set. A row of 32 takes
// two shuffles whose indices are set up so that exactly one of them answers: code + 0x70 has its top bit set
// from 16 on, code - 16 below 16.
template <int COLUMNS>
struct Codes<Vec8, COLUMNS> {
  static constexpr int ROW_BYTES = ROW_CODES;
  __m512i in_lower[COLUMNS];
  __m512i in_upper[COLUMNS];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < COLUMNS; ++k) {
      const __m512i codes = _mm512_load_si512(residues + 64 * k);
      in_lower[k] = _mm512_adds_epu8(codes, _mm512_set1_epi8(0x70));
      in_upper[k] = _mm512_sub_epi8(codes, _mm512_set1_epi8(16));
    }
  }
  void look_up(const uint8_t* row, Vec8* out) const {
    const __m128i* halves = reinterpret_cast<const __m128i*>(row);
    const __m512i lower = _mm512_broadcast_i32x4(_mm_load_si128(halves));
    const __m512i upper = _mm512_broadcast_i32x4(_mm_load_si128(halves + 1));
    for (int k = 0; k < COLUMNS; ++k) {
      out[k].v =
          _mm512_or_si512(_mm512_shuffle_epi8(lower, in_lower[k]), _mm512_shuffle_epi8(upper, in_upper[k]));
    }
  }
};
#endif

// A row of 32 words is one register.
template <int COLUMNS>
struct Codes<Vec16, COLUMNS> {
  static constexpr int ROW_BYTES = 2 * ROW_CODES;
  __m512i index[COLUMNS];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < COLUMNS; ++k) {
      index[k] = _mm512_cvtepu8_epi16(_mm256_load_si256(reinterpret_cast<const __m256i*>(residues + 32 * k)));
    }
  }
  void look_up(const uint8_t* row, Vec16* out) const {
    const __m512i scores = _mm512_load_si512(row);
    for (int k = 0; k < COLUMNS; ++k) out[k].v = _mm512_permutexvar_epi16(index[k], scores);
  }
};

// A row of 32 double words is two registers.
template <int COLUMNS>
struct Codes<Vec32, COLUMNS> {
  static constexpr int ROW_BYTES = 4 * ROW_CODES;
  __m512i index[COLUMNS];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < COLUMNS; ++k) {
      index[k] = _mm512_cvtepu8_epi32(_mm_load_si128(reinterpret_cast<const __m128i*>(residues + 16 * k)));
    }
  }
  void look_up(const uint8_t* row, Vec32* out) const {
    const __m512i lower = _mm512_load_si512(row);
    const __m512i upper = _mm512_load_si512(row + 64);
    for (int k = 0; k < COLUMNS; ++k) out[k].v = _mm512_permutex2var_epi32(lower, index[k], upper);
  }
};

}  // namespace
}  // namespace zelvan
