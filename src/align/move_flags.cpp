#include "align/move_flags.h"

#include <algorithm>

MoveFlags uchararr(int32_t dlen, int32_t qlen) {
  return make_table<uint8_t>(dlen, qlen, 0);
}

void ucharfree(MoveFlags& flags) {
  flags = MoveFlags();
}

void fit_flags(MoveFlags& flags, int32_t dlen, int32_t qlen) {
  const std::size_t cells = static_cast<std::size_t>(dlen) * static_cast<std::size_t>(qlen);
  if (flags.cells.size() < cells) flags = uchararr(dlen, qlen);
  flags.rows = dlen;
  flags.cols = qlen;
}

FlagSweep fill_flags(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                     const GapRows& gaps, int32_t threshold, MoveFlags& out_flags) {
  FlagSweep sweep;
  std::fill_n(out_flags[0], qlen - 1, uint8_t{0});
  if (qlen <= 2) return sweep;
  // The row of cells above, and what a gap from each of them would leave of its value.
  UTvector<int32_t> values(static_cast<std::size_t>(qlen), 0);
  UTvector<int32_t> gaps_down(static_cast<std::size_t>(qlen), 0);
  UTvector<int32_t> above(static_cast<std::size_t>(qlen), 0);
  for (int32_t i = 1; i <= qlen - 2; ++i) gaps_down[static_cast<std::size_t>(i)] = -gaps.open[i - 1];
  for (int32_t j = 1; j <= dlen - 2; ++j) {
    const int32_t* scores = table[target[j]];
    uint8_t* flags = out_flags[j];
    flags[0] = 0;
    int32_t left = -gaps.open[0];
    int32_t row_best = 0;
    for (int32_t i = 1; i <= qlen - 2; ++i) {
      const auto at = static_cast<std::size_t>(i);
      const int32_t diagonal = above[at - 1] + scores[i];
      const int32_t up = gaps_down[at];
      const int32_t h = std::max(std::max(std::max(diagonal, up), 0), left);
      flags[i] = static_cast<uint8_t>((h == diagonal ? MOVE_DIAGONAL : 0) | (h == up ? MOVE_UP : 0) |
                                      (h == left ? MOVE_LEFT : 0) | (h == 0 ? CELL_ZERO : 0));
      values[at] = h;
      gaps_down[at] = h - (h == up ? gaps.extend : gaps.open)[i - 1];
      left = h - (h == left ? gaps.extend : gaps.open)[i];
      row_best = std::max(row_best, h);
    }
    sweep.best = std::max(sweep.best, row_best);
    if (row_best >= threshold) {
      if (sweep.first_row == 0) {
        sweep.first_row = j;
        sweep.values = above;
      }
      sweep.last_row = j;
    }
    std::swap(values, above);
  }
  return sweep;
}
