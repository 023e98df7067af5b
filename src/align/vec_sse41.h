// SSE4.1 registers as lanes of 8, 16 and 32 bits. Included by one kernel object only; everything is local to it.
#pragma once

#include <immintrin.h>

#include "align/scan_kernel.h"

namespace {

constexpr InstructionSet COMPILED_SET = InstructionSet::SSE41;

struct Vec8 {
  static constexpr LaneWidth WIDTH = LaneWidth::BITS8;
  __m128i v;
};
struct Vec16 {
  static constexpr LaneWidth WIDTH = LaneWidth::BITS16;
  __m128i v;
};
struct Vec32 {
  static constexpr LaneWidth WIDTH = LaneWidth::BITS32;
  __m128i v;
};

template <class V>
V load(const uint8_t* from) {
  return {_mm_load_si128(reinterpret_cast<const __m128i*>(from))};
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
V select(V mask, V where_set, V where_clear) {
  return {_mm_blendv_epi8(where_clear.v, where_set.v, mask.v)};
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
inline Vec8 equal(Vec8 a, Vec8 b) {
  return {_mm_cmpeq_epi8(a.v, b.v)};
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
inline Vec16 equal(Vec16 a, Vec16 b) {
  return {_mm_cmpeq_epi16(a.v, b.v)};
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
inline Vec32 equal(Vec32 a, Vec32 b) {
  return {_mm_cmpeq_epi32(a.v, b.v)};
}

// The gap value that a cell hands on, as in vec_avx2.h.
template <class V>
V carry(V cell, V gap, V open, V change) {
  const __m128i extends = equal(cell, gap).v;
  return sub(cell, V{_mm_xor_si128(open.v, _mm_and_si128(extends, change.v))});
}

// Look-ups by byte shuffles, as in vec_avx2.h.
struct Index {
  __m128i lower, upper;  // for entries 0..15 and 16..31
};
inline Index make_index(const uint8_t* residues) {
  const __m128i codes = _mm_load_si128(reinterpret_cast<const __m128i*>(residues));
  return {_mm_adds_epu8(codes, _mm_set1_epi8(0x70)), _mm_sub_epi8(codes, _mm_set1_epi8(16))};
}
inline __m128i shuffle_row(const uint8_t* row, const Index& index) {
  const __m128i* halves = reinterpret_cast<const __m128i*>(row);
  return _mm_or_si128(_mm_shuffle_epi8(_mm_load_si128(halves), index.lower),
                      _mm_shuffle_epi8(_mm_load_si128(halves + 1), index.upper));
}

// The residues of some columns, made ready for look-ups in a score row.
template <class V, int COLUMNS>
struct Codes;

template <int COLUMNS>
struct Codes<Vec8, COLUMNS> {
  static constexpr int ROW_BYTES = ROW_CODES;
  Index index[COLUMNS];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < COLUMNS; ++k) index[k] = make_index(residues + 16 * k);
  }
  void look_up(const uint8_t* row, Vec8* out) const {
    for (int k = 0; k < COLUMNS; ++k) out[k].v = shuffle_row(row, index[k]);
  }
};

// Two columns of 8 lanes share one index: the low and the high bytes of their scores are looked up apart.
template <int COLUMNS>
struct Codes<Vec16, COLUMNS> {
  static constexpr int ROW_BYTES = 2 * ROW_CODES;
  Index index[COLUMNS / 2];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < COLUMNS / 2; ++k) index[k] = make_index(residues + 16 * k);
  }
  void look_up(const uint8_t* row, Vec16* out) const {
    for (int k = 0; k < COLUMNS / 2; ++k) {
      const __m128i low = shuffle_row(row, index[k]);
      const __m128i high = shuffle_row(row + ROW_CODES, index[k]);
      out[2 * k].v = _mm_unpacklo_epi8(low, high);
      out[2 * k + 1].v = _mm_unpackhi_epi8(low, high);
    }
  }
};

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
