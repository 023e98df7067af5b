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
  if (flags.cells.size() < cells) {
    ucharfree(flags);  // first, so that two of them never exist together
    flags = uchararr(dlen, qlen);
  }
  flags.rows = dlen;
  flags.cols = qlen;
}

FlagSweep fill_flags(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                     const GapRows& gaps, int32_t threshold, MoveFlags& out_flags) {
  FlagSweep sweep;
  std::fill_n(out_flags[0], qlen - 1, uint8_t{0});
  if (qlen <= 2) return sweep;
  // The cells of the row above, in place overwritten by the row's own, and their values less a gap from there.
  UTvector<int32_t> value_row(static_cast<std::size_t>(qlen), 0);
  UTvector<int32_t> gap_row(static_cast<std::size_t>(qlen), 0);
  UTvector<int32_t> row_above(static_cast<std::size_t>(qlen), 0);
  int32_t* values = value_row.data();
  int32_t* gaps_down = gap_row.data();
  for (int32_t i = 1; i <= qlen - 2; ++i) gaps_down[i] = -gaps.open[i - 1];
  for (int32_t j = 1; j <= dlen - 2; ++j) {
    const int32_t* scores = table[target[j]];
    uint8_t* flags = out_flags[j];
    flags[0] = 0;
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
    sweep.best = std::max(sweep.best, row_best);
    if (row_best >= threshold) {
      if (sweep.first_row == 0) {
        sweep.first_row = j;
        sweep.values = row_above;
      }
      sweep.last_row = j;
    }
  }
  return sweep;
}
