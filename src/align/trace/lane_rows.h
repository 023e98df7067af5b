// Scores and penalties in the form that kernels read which work out target positions side by side.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "align/simd/instruction_set.h"
#include "util/memory.h"

namespace zelvan {

// How lanes hold values: those of 16 bits saturate, and their smallest value stands for 0. Neither a score of
// `never` nor a penalty of `always` leaves anything of a cell.
template <class LANE>
struct LaneRange;
template <>
struct LaneRange<int16_t> {
  static constexpr LaneWidth WIDTH = LaneWidth::BITS16;
  static constexpr int32_t ZERO = INT16_MIN, TOP = INT16_MAX;
  static constexpr int32_t NEVER = INT16_MIN, ALWAYS = INT16_MAX;
};
template <>
struct LaneRange<int32_t> {
  static constexpr LaneWidth WIDTH = LaneWidth::BITS32;
  static constexpr int32_t ZERO = 0, TOP = INT32_MAX;
  static constexpr int32_t NEVER = INT32_MIN / 2, ALWAYS = INT32_MAX / 2;
};

// Entries of lane size from -margin to `last`, every one `value` at first.
template <class LANE>
struct LaneRow {
  UTvector<LANE> entries;
  LANE* origin;
  LaneRow(int32_t margin, int32_t last, int32_t value)
      : entries(static_cast<std::size_t>(margin + last + 1), static_cast<LANE>(value)),
        origin(entries.data() + margin) {}
  uint8_t* bytes() { return reinterpret_cast<uint8_t*>(origin); }
};

// Copies what fits lanes; false where something does not.
template <class LANE>
bool narrow(const int32_t* from, int32_t count, LANE* to) {
  int32_t lost = 0;
  for (int32_t k = 0; k < count; ++k) {
    to[k] = static_cast<LANE>(from[k]);
    lost |= to[k] ^ from[k];
  }
  return lost == 0;
}

// The score rows of a table, each made when it is first asked for.
template <class LANE>
struct ScoreRows {
  const LookupTable& table;
  int32_t positions, margin, last;  // entries from -margin to `last`, scores at 1..positions
  bool fit = true;                  // whether every score so far can be held
  UTvector<LaneRow<LANE>> made;     // the first for where there is no residue
  UTvector<const uint8_t*> row_of;  // [code], null before it is made

  ScoreRows(const LookupTable& of, int32_t positions_of, int32_t margin_of, int32_t last_of)
      : table(of),
        positions(positions_of),
        margin(margin_of),
        last(last_of),
        row_of(static_cast<std::size_t>(of.rows), nullptr) {
    made.reserve(row_of.size() + 1);
    made.emplace_back(margin, last, LaneRange<LANE>::NEVER);
  }
  const uint8_t* none() { return made.front().bytes(); }
  const uint8_t* of(int8_t code) {
    const uint8_t*& row = row_of[static_cast<std::size_t>(code)];
    if (row == nullptr) {
      made.emplace_back(margin, last, LaneRange<LANE>::NEVER);
      fit = narrow(table[code] + 1, positions, made.back().origin + 1) && fit;
      row = made.back().bytes();
    }
    return row;
  }
};

}  // namespace zelvan
