#include "align/trace/move_flags.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "align/simd/aligned_block.h"
#include "align/trace/flag_kernel.h"
#include "align/trace/lane_rows.h"

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
    case InstructionSet::AVX512VBMI:
      return run_flag_kernel_avx512(block);
    case InstructionSet::AVX2:
      return run_flag_kernel_avx2(block);
    case InstructionSet::SSE41:
      return run_flag_kernel_sse41(block);
#elif defined(__aarch64__)
    case InstructionSet::NEON:
      return run_flag_kernel_neon(block);
#endif
    default:
      return run_flag_kernel_portable(block);
  }
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

  ScoreRows<LANE> score_rows(table, positions, rows, steps);
  fit_flags(out_flags, dlen, qlen, rows, steps);
  AlignedBlock best;
  resize_block(best, static_cast<std::size_t>(rows) * sizeof(LANE));
  block.best = best.data;
  block.flags = out_flags.cells.data();
  const LANE* const row_best = reinterpret_cast<const LANE*>(best.data);
  out_sweep = {};
  for (int32_t first = 1; first <= dlen - 2; first += rows) {
    for (int32_t r = 0; r < rows; ++r) {
      block.scores[r] = first + r <= dlen - 2 ? score_rows.of(target[first + r]) : score_rows.none();
    }
    if (!score_rows.fit) return false;
    run_flag_kernel(set, block);
    for (int32_t r = 0; r < rows && first + r <= dlen - 2; ++r) {
      if (Range::ZERO < 0 && row_best[r] == Range::TOP) return false;
      note_row(out_sweep, first + r, row_best[r] - Range::ZERO, threshold);
    }
    block.flags += static_cast<std::size_t>(steps) * static_cast<std::size_t>(rows);
  }
  return true;
}

}  // namespace

MoveFlags uchararr(int32_t dlen, int32_t qlen, std::size_t least) {
  MoveFlags flags;
  flags.rows = dlen;
  flags.cols = qlen;
  flags.steps = qlen - 1;
  flags.cells.resize(
      std::max(least, static_cast<std::size_t>(dlen - 1) * static_cast<std::size_t>(qlen - 1)));
  return flags;
}

void ucharfree(MoveFlags& flags) {
  const std::size_t least = std::max(flags.least, flags.cells.size());
  flags = MoveFlags();
  flags.least = least;
}

void fit_flags(MoveFlags& flags, int32_t dlen, int32_t qlen, int32_t group, int32_t steps) {
  const int32_t first = group == 1 ? 0 : 1;
  if (group == 1) steps = qlen - 1;
  const int32_t lanes = (dlen - 1 - first + group - 1) / group * group;
  if (flags.cells.size() < static_cast<std::size_t>(lanes) * static_cast<std::size_t>(steps)) {
    ucharfree(flags);  // first, so that two of them never exist together
    flags = uchararr(lanes + 1, steps + 1, flags.least);
  }
  flags.rows = dlen;
  flags.cols = qlen;
  flags.first = first;
  flags.group = group;
  flags.steps = steps;
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

void find_high_cells(const MoveFlags& flags, int32_t j, HighCells& out_cells) {
  constexpr uint64_t HIGH = CELL_HIGH * uint64_t{0x0101010101010101};
  const int32_t group = flags.group;
  const int32_t first_row = flags.first + (j - flags.first) / group * group;
  if (!out_cells.positions.empty() && out_cells.first_row == first_row) return;
  out_cells.first_row = first_row;
  out_cells.positions.resize(static_cast<std::size_t>(group));
  for (UTvector<int32_t>& positions : out_cells.positions) positions.clear();
  const int64_t size = int64_t{flags.steps} * group;
  const uint8_t* const block = flags.cells.data() + (first_row - flags.first) * int64_t{flags.steps};
  const auto note = [&](int64_t at) {
    const auto lane = static_cast<int32_t>(at % group), step = static_cast<int32_t>(at / group);
    const int32_t i = step - lane + flags.first;
    if (i < 1 || i > flags.cols - 2) return;  // before or behind the query
    out_cells.positions[static_cast<std::size_t>(lane)].push_back(i);
  };
  for (int64_t at = 0; at < size; at += 8) {
    uint64_t word = HIGH;  // the last cells, too few for a word, are all looked at
    if (size - at >= 8) std::memcpy(&word, block + at, 8);
    if ((word & HIGH) == 0) continue;
    for (int64_t one = at; one < std::min(at + 8, size); ++one) {
      if ((block[one] & CELL_HIGH) != 0) note(one);
    }
  }
}

bool any_negative(const GapRows& gaps, int32_t qlen) {
  const auto is_negative = [](int32_t penalty) { return penalty < 0; };
  return std::any_of(gaps.extend, gaps.extend + qlen - 2, is_negative) ||
         std::any_of(gaps.open, gaps.open + qlen - 2, is_negative);
}

}  // namespace zelvan
