// What SSE4.1 and AVX2 share: masks, and scores looked up by byte shuffles. Included behind the lanes of
// either; everything is local to the kernel object.
#pragma once

#include <cstdint>

namespace zelvan {
namespace {

template <class V>
Register load_mask(const uint8_t* from) {
  return load<V>(from).v;
}

// One byte for every lane, in which flags are set one by one.
template <class V>
struct LaneFlags {
  Register v = splat_byte(0);
  void set(Register mask, uint8_t flag) {
    const uint32_t pattern = V::WIDTH == LaneWidth::BITS16 ? flag * 0x00010001U : flag;
    v = or_bits(v, and_bits(mask, splat<V>(pattern).v));
  }
  void store(uint8_t* to) const { store_bytes(to, V{v}); }
};

// One of two vectors in every lane, chosen again and again. On most processors logic takes fewer steps than a
// blend.
template <class V>
struct Choice {
  V clear, difference;
};
template <class V>
Choice<V> choice_of(V where_set, V where_clear) {
  return {where_clear, V{xor_bits(where_set.v, where_clear.v)}};
}
// a less the chosen one.
template <class V>
V sub_choice(V a, Register mask, const Choice<V>& choice) {
  const V chosen = {xor_bits(choice.clear.v, and_bits(mask, choice.difference.v))};
  return sub(a, chosen);
}

// The residues of some columns, made ready for look-ups in a score row.
template <class V, int COLUMNS>
struct Codes;

// A byte shuffle reads tables of 16 entries and gives 0 where an index has its top bit set. A row of 32 takes
// two shuffles whose indices are set up so that exactly one of them answers: code + 0x70 has its top bit set
// from 16 on, code - 16 below 16.
struct Index {
  Register lower, upper;  // for entries 0..15 and 16..31
};
inline Index make_index(Register codes) {
  return {add_unsigned_bytes(codes, splat_byte(0x70)), sub_bytes(codes, splat_byte(16))};
}
inline Register look_up_bytes(const uint8_t* row, const Index& index) {
  return or_bits(shuffle_bytes(load_table(row), index.lower),
                 shuffle_bytes(load_table(row + 16), index.upper));
}

template <int COLUMNS>
struct Codes<Vec8, COLUMNS> {
  static constexpr int ROW_BYTES = ROW_CODES;
  static constexpr int LANES = sizeof(Register);
  Index index[COLUMNS];
  explicit Codes(const uint8_t* residues) {
    for (int k = 0; k < COLUMNS; ++k) index[k] = make_index(load<Vec8>(residues + k * LANES).v);
  }
  void look_up(const uint8_t* row, Vec8* out) const {
    for (int k = 0; k < COLUMNS; ++k) out[k].v = look_up_bytes(row, index[k]);
  }
};

// Two columns share one index: the low and the high bytes of their scores are looked up apart, then joined.
template <int COLUMNS>
struct Codes<Vec16, COLUMNS> {
  static_assert(COLUMNS % 2 == 0);
  static constexpr int PAIRS = COLUMNS / 2;
  static constexpr int ROW_BYTES = 2 * ROW_CODES;
  Index index[PAIRS];
  explicit Codes(const uint8_t* residues) {
    constexpr int BYTES = sizeof(Register);
    for (int k = 0; k < PAIRS; ++k) index[k] = make_index(load_column_pair(residues + k * BYTES));
  }
  void look_up(const uint8_t* row, Vec16* out) const {
    for (int k = 0; k < PAIRS; ++k) {
      const Register low = look_up_bytes(row, index[k]);
      const Register high = look_up_bytes(row + ROW_CODES, index[k]);
      out[2 * k].v = interleave_lower(low, high);
      out[2 * k + 1].v = interleave_upper(low, high);
    }
  }
};

}  // namespace
}  // namespace zelvan
