#include "align/scan/lane_table.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <numeric>

namespace zelvan {
namespace {

// The row of every query position, codes side by side.
UTvector<int32_t> rows_by_position(const ScanScores& scores) {
  UTvector<int32_t> rows(static_cast<std::size_t>(scores.positions) * ROW_CODES, 0);
  for (int32_t c = 0; c < scores.table->rows; ++c) {
    const int32_t* of_code = (*scores.table)[c];
    for (int32_t i = 0; i < scores.positions; ++i) {
      rows[static_cast<std::size_t>(i) * ROW_CODES + static_cast<std::size_t>(c)] = of_code[i + 1];
    }
  }
  return rows;
}

// Moves equal rows together: fills `row_of` and keeps one of each in `rows`.
void keep_distinct(UTvector<int32_t>& rows, UTvector<int32_t>& row_of) {
  const std::size_t positions = row_of.size();
  constexpr std::size_t BYTES = ROW_CODES * sizeof(int32_t);
  const auto row = [&](std::size_t i) { return rows.data() + i * ROW_CODES; };
  UTvector<std::size_t> order(positions);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t a, std::size_t b) { return std::memcmp(row(a), row(b), BYTES) < 0; });
  UTvector<int32_t> distinct;
  for (std::size_t k = 0; k < positions; ++k) {
    if (k == 0 || std::memcmp(row(order[k - 1]), row(order[k]), BYTES) != 0) {
      distinct.insert(distinct.end(), row(order[k]), row(order[k]) + ROW_CODES);
    }
    row_of[order[k]] = static_cast<int32_t>(distinct.size() / ROW_CODES) - 1;
  }
  rows = std::move(distinct);
}

int32_t common_divisor(int32_t divisor, const UTvector<int32_t>& values) {
  for (const int32_t value : values) {
    if (divisor == 1) break;
    // The size of the lowest integer, 2^31, is no integer of 32 bits; half of it divides it, too.
    const int64_t common = std::gcd(int64_t{divisor}, int64_t{value});
    divisor = static_cast<int32_t>(std::min(common, int64_t{1} << 30));
  }
  return divisor;
}

void divide(UTvector<int32_t>& values, int32_t divisor) {
  for (int32_t& value : values) value /= divisor;
}

// `value` in every lane of 32 bits.
uint32_t lane_pattern(int32_t value, LaneWidth width) {
  const auto bits = static_cast<uint32_t>(value);
  switch (width) {
    case LaneWidth::BITS8:
      return (bits & 0xFFU) * 0x01010101U;
    case LaneWidth::BITS16:
      return (bits & 0xFFFFU) * 0x00010001U;
    case LaneWidth::BITS32:
      break;
  }
  return bits;
}

UTvector<uint32_t> lane_patterns(const UTvector<int32_t>& values, LaneWidth width) {
  UTvector<uint32_t> patterns(values.size() + 1, 0);
  std::transform(values.begin(), values.end(), patterns.begin(),
                 [&](int32_t value) { return lane_pattern(value, width); });
  return patterns;
}

void store_row(uint8_t* to, const int32_t* scores, LaneWidth width, bool split) {
  for (int32_t c = 0; c < ROW_CODES; ++c) {
    const auto bits = static_cast<uint32_t>(scores[c]);
    switch (width) {
      case LaneWidth::BITS8:
        to[c] = static_cast<uint8_t>(bits);
        break;
      case LaneWidth::BITS16:
        if (split) {
          to[c] = static_cast<uint8_t>(bits);
          to[ROW_CODES + c] = static_cast<uint8_t>(bits >> 8);
        } else {
          const auto half = static_cast<uint16_t>(bits);
          std::memcpy(to + 2 * c, &half, sizeof half);
        }
        break;
      case LaneWidth::BITS32:
        std::memcpy(to + 4 * c, &bits, sizeof bits);
        break;
    }
  }
}

}  // namespace

LaneScores make_lane_scores(const ScanScores& scores) {
  LaneScores lane;
  lane.positions = scores.positions;
  lane.rows = rows_by_position(scores);
  lane.row_of.resize(static_cast<std::size_t>(scores.positions));
  keep_distinct(lane.rows, lane.row_of);
  lane.extend = scores.extend;
  lane.open = scores.open;

  lane.unit = common_divisor(common_divisor(common_divisor(scores.shift, lane.extend), lane.open), lane.rows);
  lane.unit = std::max(lane.unit, 1);
  lane.shift = scores.shift / lane.unit;
  divide(lane.rows, lane.unit);
  divide(lane.extend, lane.unit);
  divide(lane.open, lane.unit);

  const auto [lowest, highest] = std::minmax_element(lane.rows.begin(), lane.rows.end());
  lane.lowest_score = std::min(*lowest, 0);
  lane.highest_score = std::max(*highest, 0);
  lane.lowest_penalty = lane.shift;
  lane.highest_penalty = lane.shift;
  for (const UTvector<int32_t>* penalties : {&lane.extend, &lane.open}) {
    for (const int32_t penalty : *penalties) {
      lane.lowest_penalty = std::min(lane.lowest_penalty, penalty);
      lane.highest_penalty = std::max(lane.highest_penalty, penalty);
    }
  }
  for (std::size_t r = PAD_CODE; r < lane.rows.size(); r += ROW_CODES) lane.rows[r] = lane.lowest_score;
  return lane;
}

bool fits(const LaneScores& scores, LaneWidth width) {
  if (width == LaneWidth::BITS32) return true;
  const int32_t top = width == LaneWidth::BITS8 ? INT8_MAX : INT16_MAX;
  return scores.lowest_score >= -top - 1 && scores.highest_score <= top && scores.lowest_penalty >= 0 &&
         scores.highest_penalty <= top;
}

LaneTable make_lane_table(const LaneScores& scores, LaneWidth width, const KernelShape& shape) {
  const std::size_t row_bytes = static_cast<std::size_t>(ROW_CODES * shape.lane_bytes);
  const std::size_t row_count = scores.rows.size() / ROW_CODES;
  LaneTable table;
  resize_block(table.rows, row_count * row_bytes);
  for (std::size_t r = 0; r < row_count; ++r) {
    store_row(table.rows.data + r * row_bytes, scores.rows.data() + r * ROW_CODES, width, shape.split_rows);
  }
  table.extend = lane_patterns(scores.extend, width);
  table.open = scores.open.empty() ? table.extend : lane_patterns(scores.open, width);
  table.shift = lane_pattern(scores.shift, width);
  return table;
}

}  // namespace zelvan
