#include "align/trace/move_flags.h"

#include <algorithm>
#include <limits>

#include "align/simd/aligned_block.h"
#include "align/trace/flag_kernel.h"

namespace zelvan {
namespace {

void note_row(FlagSweep& sweep, int32_t row, int32_t row_best, int32_t threshold) {
  sweep.best = std::max(sweep.best, row_best);
  if (row_best >= threshold) sweep.high_rows.push_back(row);
}

FlagSweep sweep_rows(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                     const GapRows& gaps, int32_t threshold, MoveFlags& out_flags) {
  fit_flags(out_flags, dlen, qlen);
  std::fill_n(&out_flags[0][0], qlen - 1, uint8_t{0});
  FlagSweep sweep;
  // The cells of the row above, overwritten in place by the row's own, and their values less a gap from
  // there.
  UTvector<int32_t> value_row(static_cast<std::size_t>(qlen), 0);
  UTvector<int32_t> gap_row(static_cast<std::size_t>(qlen), 0);
  int32_t* values = value_row.data();
  int32_t* gaps_down = gap_row.data();
  for (int32_t i = 1; i <= qlen - 2; ++i) gaps_down[i] = -gaps.open[i - 1];
  for (int32_t j = 1; j <= dlen - 2; ++j) {
    const int32_t* scores = table[target[j]];
    const FlagRow flags = out_flags[j];
    flags[0] = 0;
    int32_t corner = 0;
    int32_t left = -gaps.open[0];
    int32_t row_best = 0;
    for (int32_t i = 1; i <= qlen - 2; ++i) {
      const int32_t diagonal = corner + scores[i];
      const int32_t up = gaps_down[i];
      const int32_t h = std::max(std::max(std::max(diagonal, up), 0), left);
      flags[i] =
          static_cast<uint8_t>((h == diagonal) * MOVE_DIAGONAL | (h == up) * MOVE_UP |
                               (h == left) * MOVE_LEFT | (h == 0) * CELL_ZERO | (h >= threshold) * CELL_HIGH);
      corner = values[i];
      values[i] = h;
      gaps_down[i] = h - (h == up ? gaps.extend : gaps.open)[i - 1];
      left = h - (h == left ? gaps.extend : gaps.open)[i];
      row_best = std::max(row_best, h);
    }
    note_row(sweep, j, row_best, threshold);
  }
  return sweep;
}

void run_flag_kernel(InstructionSet set, const FlagBlock& block) {
  switch (set) {
#if defined(__x86_64__)
    case InstructionSet::AVX512:
      return run_flag_kernel_avx512(block);
    case InstructionSet::AVX2:
      return run_flag_kernel_avx2(block);
    case InstructionSet::SSE41:
      return run_flag_kernel_sse41(block);
#endif
    default:
      return run_flag_kernel_portable(block);
  }
}

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

// The sweep in lanes of one width; false where scores, penalties or cells do not fit them.
template <class LANE>
bool sweep_lanes(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                 const GapRows& gaps, int32_t threshold, InstructionSet set, MoveFlags& out_flags,
                 FlagSweep& out_sweep) {
  using Range = LaneRange<LANE>;
  if (threshold > int64_t{Range::TOP} - Range::ZERO) return false;
  const int32_t positions = qlen - 2;
  const int32_t rows = flag_rows(set, Range::WIDTH), stride = flag_stride(Range::WIDTH);
  const int32_t steps = (positions + rows - 1 + stride - 1) / stride * stride;
  const int32_t margin = steps + 1;
  FlagBlock block = {};
  block.width = Range::WIDTH;
  block.steps = steps;
  block.below_high = threshold - 1 + Range::ZERO;

  LaneRow<LANE> extend(margin, rows + stride, Range::ALWAYS), open(margin, rows + stride, Range::ALWAYS);
  for (auto [from, row] : {std::pair{gaps.extend, &extend}, std::pair{gaps.open, &open}}) {
    LANE* const to = row->origin - positions;  // reversed: that of position i at -i
    if (!narrow(from, positions, to)) return false;
    std::reverse(to, to + positions);
  }
  LaneRow<LANE> values(rows, steps, Range::ZERO), gaps_down(rows, steps, Range::ZERO);
  block.extend = extend.bytes();
  block.open = open.bytes();
  block.values = values.bytes();
  block.gaps_down = gaps_down.bytes();

  // The score rows of the target's residues, each made when it is first met, and one for where it has ended.
  UTvector<LaneRow<LANE>> made;
  made.reserve(static_cast<std::size_t>(table.rows) + 1);
  made.emplace_back(rows, steps, Range::NEVER);
  UTvector<uint8_t*> row_of(static_cast<std::size_t>(table.rows), nullptr);

  fit_flags(out_flags, dlen, qlen, rows, steps);
  AlignedBlock best;
  resize_block(best, static_cast<std::size_t>(rows) * sizeof(LANE));
  block.best = best.data;
  const LANE* const row_best = reinterpret_cast<const LANE*>(best.data);
  out_sweep = {};
  for (int32_t first = 1; first <= dlen - 2; first += rows) {
    for (int32_t r = 0; r < rows; ++r) {
      block.scores[r] = made.front().bytes();
      if (first + r > dlen - 2) continue;
      uint8_t*& row = row_of[static_cast<std::size_t>(target[first + r])];
      if (row == nullptr) {
        made.emplace_back(rows, steps, Range::NEVER);
        if (!narrow(table[target[first + r]] + 1, positions, made.back().origin + 1)) return false;
        row = made.back().bytes();
      }
      block.scores[r] = row;
    }
    block.flags = out_flags.cells.data() + static_cast<std::size_t>(first / rows) *
                                               static_cast<std::size_t>(steps) *
                                               static_cast<std::size_t>(rows);
    run_flag_kernel(set, block);
    for (int32_t r = 0; r < rows && first + r <= dlen - 2; ++r) {
      if (Range::ZERO < 0 && row_best[r] == Range::TOP) return false;
      note_row(out_sweep, first + r, row_best[r] - Range::ZERO, threshold);
    }
  }
  return true;
}

}  // namespace

MoveFlags uchararr(int32_t dlen, int32_t qlen) {
  MoveFlags flags;
  fit_flags(flags, dlen, qlen);
  return flags;
}

void ucharfree(MoveFlags& flags) {
  flags = MoveFlags();
}

void fit_flags(MoveFlags& flags, int32_t dlen, int32_t qlen, int32_t group, int32_t steps) {
  flags.first = group == 1 ? 0 : 1;
  flags.group = group;
  flags.steps = group == 1 ? qlen - 1 : steps;
  const int32_t groups = (dlen - 1 - flags.first + group - 1) / group;
  const std::size_t cells = static_cast<std::size_t>(groups) * static_cast<std::size_t>(group) *
                            static_cast<std::size_t>(flags.steps);
  if (flags.cells.size() < cells) {
    flags.cells = {};  // first, so that two of them never exist together
    flags.cells.resize(cells);
  }
  flags.rows = dlen;
  flags.cols = qlen;
}

FlagSweep fill_flags(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                     const GapRows& gaps, int32_t threshold, InstructionSet set, MoveFlags& out_flags) {
  if (qlen <= 2) return {};
  threshold = std::max(threshold, 1);
  if (set == InstructionSet::REFERENCE || any_negative(gaps, qlen)) {
    return sweep_rows(qlen, target, dlen, table, gaps, threshold, out_flags);
  }
  FlagSweep sweep;
  if (has_flag_lanes(set, LaneWidth::BITS16) &&
      sweep_lanes<int16_t>(qlen, target, dlen, table, gaps, threshold, set, out_flags, sweep)) {
    return sweep;
  }
  sweep_lanes<int32_t>(qlen, target, dlen, table, gaps, threshold, set, out_flags, sweep);
  return sweep;
}

bool any_negative(const GapRows& gaps, int32_t qlen) {
  const auto is_negative = [](int32_t penalty) { return penalty < 0; };
  return std::any_of(gaps.extend, gaps.extend + qlen - 2, is_negative) ||
         std::any_of(gaps.open, gaps.open + qlen - 2, is_negative);
}

}  // namespace zelvan
