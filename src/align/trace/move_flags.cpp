#include "align/trace/move_flags.h"

#include <algorithm>

#include "align/trace/flag_kernel.h"

namespace zelvan {
namespace {

// Takes note of a row's best cell. The cells above it are handed on for the first that counts.
void note_row(FlagSweep& sweep, int32_t row, int32_t row_best, int32_t threshold, int32_t first_row,
              UTvector<int32_t>& cells_above) {
  sweep.best = std::max(sweep.best, row_best);
  if (row_best < threshold) return;
  if (sweep.first_row == 0) {
    sweep.first_row = first_row;
    sweep.values.swap(cells_above);
  }
  sweep.last_row = row;
}

FlagSweep sweep_rows(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                     const GapRows& gaps, int32_t threshold, MoveFlags& out_flags) {
  FlagSweep sweep;
  // The cells of the row above, overwritten in place by the row's own, and their values less a gap from
  // there.
  UTvector<int32_t> value_row(static_cast<std::size_t>(qlen), 0);
  UTvector<int32_t> gap_row(static_cast<std::size_t>(qlen), 0);
  UTvector<int32_t> row_above;
  int32_t* values = value_row.data();
  int32_t* gaps_down = gap_row.data();
  for (int32_t i = 1; i <= qlen - 2; ++i) gaps_down[i] = -gaps.open[i - 1];
  for (int32_t j = 1; j <= dlen - 2; ++j) {
    const int32_t* scores = table[target[j]];
    uint8_t* flags = out_flags[j];
    if (sweep.first_row == 0) row_above = value_row;
    int32_t corner = 0;
    int32_t left = -gaps.open[0];
    int32_t row_best = 0;
    for (int32_t i = 1; i <= qlen - 2; ++i) {
      const int32_t diagonal = corner + scores[i];
      const int32_t up = gaps_down[i];
      const int32_t h = std::max(std::max(std::max(diagonal, up), 0), left);
      flags[i] = static_cast<uint8_t>((h == diagonal) * MOVE_DIAGONAL | (h == up) * MOVE_UP |
                                      (h == left) * MOVE_LEFT | (h == 0) * CELL_ZERO);
      corner = values[i];
      values[i] = h;
      // Both outcomes are worked out before one is taken: which one it is cannot be foreseen.
      const int32_t up_extended = h - gaps.extend[i - 1], up_opened = h - gaps.open[i - 1];
      gaps_down[i] = h == up ? up_extended : up_opened;
      const int32_t left_extended = h - gaps.extend[i], left_opened = h - gaps.open[i];
      left = h == left ? left_extended : left_opened;
      row_best = std::max(row_best, h);
    }
    note_row(sweep, j, row_best, threshold, j, row_above);
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

// The penalties in the order and with the margins that kernels read them; `out_origin` stands before position
// 1.
UTvector<int32_t> reversed(const int32_t* penalties, int32_t positions, const int32_t*& out_origin) {
  const int32_t before = positions + FLAG_ROWS + 1;
  UTvector<int32_t> row(static_cast<std::size_t>(before + 2 * FLAG_ROWS + 1), 0);
  std::reverse_copy(penalties, penalties + positions, row.begin() + (before - positions));
  out_origin = row.data() + before;
  return row;
}

FlagSweep sweep_blocks(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                       const GapRows& gaps, int32_t threshold, InstructionSet set, MoveFlags& out_flags) {
  FlagSweep sweep;
  const int32_t positions = qlen - 2;
  const auto padded = static_cast<std::size_t>(positions + FLAG_ROWS + 1);
  UTvector<int32_t> values(padded, 0), gaps_down(padded, 0), cells_above;
  for (int32_t i = 1; i <= positions; ++i) gaps_down[static_cast<std::size_t>(i)] = -gaps.open[i - 1];
  UTvector<int32_t> slanted_scores(padded * FLAG_ROWS);
  UTvector<uint8_t> slanted_flags(padded * FLAG_ROWS);
  const UTvector<int32_t> forbidden(padded, FORBIDDEN);
  uint8_t* flags[FLAG_ROWS];
  alignas(64) int32_t best[FLAG_ROWS];
  FlagBlock block = {};
  const UTvector<int32_t> extend = reversed(gaps.extend, positions, block.extend);
  const UTvector<int32_t> open = reversed(gaps.open, positions, block.open);
  block.positions = positions;
  block.values = values.data();
  block.gaps_down = gaps_down.data();
  block.slanted_scores = slanted_scores.data();
  block.slanted_flags = slanted_flags.data();
  block.flags = flags;
  block.best = best;
  for (int32_t first = 1; first <= dlen - 2; first += FLAG_ROWS) {
    block.rows = std::min(FLAG_ROWS, dlen - 1 - first);
    for (int32_t r = 0; r < FLAG_ROWS; ++r) {
      block.scores[r] = r < block.rows ? table[target[first + r]] : forbidden.data();
      if (r < block.rows) flags[r] = out_flags[first + r];
    }
    if (sweep.first_row == 0) cells_above = values;
    run_flag_kernel(set, block);
    for (int32_t r = 0; r < block.rows; ++r) {
      note_row(sweep, first + r, best[r], threshold, first, cells_above);
    }
  }
  return sweep;
}

}  // namespace

MoveFlags uchararr(int32_t dlen, int32_t qlen) {
  return make_table<uint8_t>(dlen, qlen, 0);
}

void ucharfree(MoveFlags& flags) {
  flags = MoveFlags();
}

void fit_flags(MoveFlags& flags, int32_t dlen, int32_t qlen) {
  const std::size_t cells = static_cast<std::size_t>(dlen) * static_cast<std::size_t>(qlen);
  if (flags.cells.size() < cells) {
    ucharfree(flags);  // first, so that two of them never exist together
    flags = uchararr(dlen, qlen);
  }
  flags.rows = dlen;
  flags.cols = qlen;
}

FlagSweep fill_flags(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                     const GapRows& gaps, int32_t threshold, InstructionSet set, MoveFlags& out_flags) {
  std::fill_n(out_flags[0], qlen - 1, uint8_t{0});
  for (int32_t j = 1; j <= dlen - 2; ++j) out_flags[j][0] = 0;
  if (qlen <= 2) return {};
  if (set == InstructionSet::REFERENCE || any_negative(gaps, qlen)) {
    return sweep_rows(qlen, target, dlen, table, gaps, threshold, out_flags);
  }
  return sweep_blocks(qlen, target, dlen, table, gaps, threshold, set, out_flags);
}

bool any_negative(const GapRows& gaps, int32_t qlen) {
  const auto is_negative = [](int32_t penalty) { return penalty < 0; };
  return std::any_of(gaps.extend, gaps.extend + qlen - 2, is_negative) ||
         std::any_of(gaps.open, gaps.open + qlen - 2, is_negative);
}

}  // namespace zelvan
