// What SSE4.1 and AVX2 share: penalties chosen by logic, and scores looked up by byte shuffles. Included behind
// the lanes of either; everything is local to the kernel object.
#pragma once

#include "align/scan/scan_kernel.h"

namespace zelvan {
namespace {

// The gap value that a cell hands on: its own less the extension where it got its value by this gap, else less
// the opening. `change` is opening XOR extension: logic takes fewer steps than a blend on most processors.
template <class V>
V carry(V cell, V gap, V open, V change) {
  return sub(cell, V{xor_bits(open.v, and_bits(equal(cell, gap).v, change.v))});
}

// A byte shuffle reads tables of 16 entries and gives 0 where an index has its top bit set. A row of 32 takes
// two shuffles whose indices are set up so that exactly one of them answers: code + 0x70 has its top bit set from
// 16 on, code - 16 below 16.
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
