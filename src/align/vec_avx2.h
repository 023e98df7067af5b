// AVX2 registers as lanes of 8, 16 and 32 bits. Included by one kernel object only; everything is local to it.
#pragma once

#include <immintrin.h>

#include "align/scan_kernel.h"

namespace {

constexpr InstructionSet COMPILED_SET = InstructionSet::AVX2;

struct Vec8 {
  static constexpr LaneWidth WIDTH = LaneWidth::BITS8;
  __m256i v;
};
struct Vec16 {
  static constexpr LaneWidth WIDTH = LaneWidth::BITS16;
  __m256i v;
};
struct Vec32 {
  static constexpr LaneWidth WIDTH = LaneWidth::BITS32;
  __m256i v;
};

template <class V>
V load(const uint8_t* from) {
  return {_mm256_load_si256(reinterpret_cast<const __m256i*>(from))};
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
V select(V mask, V where_set, V where_clear) {
  return {_mm256_blendv_epi8(where_clear.v, where_set.v, mask.v)};
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
inline Vec8 equal(Vec8 a, Vec8 b) {
  return {_mm256_cmpeq_epi8(a.v, b.v)};
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
inline Vec16 equal(Vec16 a, Vec16 b) {
  return {_mm256_cmpeq_epi16(a.v, b.v)};
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
inline Vec32 equal(Vec32 a, Vec32 b) {
  return {_mm256_cmpeq_epi32(a.v, b.v)};
}

// The gap value that a cell hands on: its own less the extension where it got its value by this gap, else less
// the opening. `change` is opening XOR extension: logic takes fewer steps than a blend on most processors.
template <class V>
V carry(V cell, V gap, V open, V change) {
  const __m256i extends = equal(cell, gap).v;
  return sub(cell, V{_mm256_xor_si256(open.v, _mm256_and_si256(extends, change.v))});
}

// A byte shuffle reads tables of 16 entries and gives 0 where an index has its top bit set. A row of 32 takes
// two shuffles whose indices are set up so that exactly one of them answers.
struct Index {
  __m256i lower, upper;  // for entries 0..15 and 16..31
};
inline Index make_index(__m256i codes) {
  return {_mm256_adds_epu8(codes, _mm256_set1_epi8(0x70)), _mm256_sub_epi8(codes, _mm256_set1_epi8(16))};
}
inline __m256i shuffle_row(const uint8_t* row, const Index& index) {
  const __m256i lower = _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(row)));
  const __m256i upper =
      _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(row + 16)));
  return _mm256_or_si256(_mm256_shuffle_epi8(lower, index.lower), _mm256_shuffle_epi8(upper, index.upper));
}

// The residues of some columns, made ready for look-ups in a score row.
template <class V, int COLUMNS>
struct Codes;

template <int COLUMNS>
struct Codes<Vec8, COLUMNS> {
  static constexpr int ROW_BYTES = ROW_CODES;
  Index index[COLUMNS];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < COLUMNS; ++k) {
      index[k] = make_index(_mm256_load_si256(reinterpret_cast<const __m256i*>(residues) + k));
    }
  }
  void look_up(const uint8_t* row, Vec8* out) const {
    for (int k = 0; k < COLUMNS; ++k) out[k].v = shuffle_row(row, index[k]);
  }
};

// Two columns share one index: the low and the high bytes of their scores are looked up apart, then joined.
template <int COLUMNS>
struct Codes<Vec16, COLUMNS> {
  static constexpr int ROW_BYTES = 2 * ROW_CODES;
  Index index[COLUMNS / 2];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < COLUMNS / 2; ++k) {
      const __m128i* two = reinterpret_cast<const __m128i*>(residues) + 2 * k;
      const __m128i first = _mm_load_si128(two);
      const __m128i second = _mm_load_si128(two + 1);
      index[k] =
          make_index(_mm256_set_m128i(_mm_unpackhi_epi64(first, second), _mm_unpacklo_epi64(first, second)));
    }
  }
  void look_up(const uint8_t* row, Vec16* out) const {
    for (int k = 0; k < COLUMNS / 2; ++k) {
      const __m256i low = shuffle_row(row, index[k]);
      const __m256i high = shuffle_row(row + ROW_CODES, index[k]);
      out[2 * k].v = _mm256_unpacklo_epi8(low, high);
      out[2 * k + 1].v = _mm256_unpackhi_epi8(low, high);
    }
  }
};

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
