#include "dna/frame_shift_traceback.h"

#include <algorithm>
#include <array>

#include "dna/frame_shift_reference.h"

namespace zelvan {
namespace {

// Columns -2..0 are the zero boundary: column j stands at index j + 3 of the rows kept here.
constexpr int32_t EDGE = 3;
constexpr int32_t CODON = 3;

struct BestCell {
  int32_t score = -1;
  int32_t row = 0;
  int32_t column = 0;
};

// The recurrence of npswli2, its flags kept for every cell.
BestCell fill_frame_flags(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table, int32_t ld_pen,
                          int32_t li_pen, int32_t fs_pen, MoveFlags& flags) {
  // Two rows of cells, and what a gap from each of them leaves of its value, upwards and to the left.
  const auto columns = static_cast<std::size_t>(std::max(m, 1) + EDGE);
  UTvector<int32_t> cells[2] = {UTvector<int32_t>(columns, 0), UTvector<int32_t>(columns, 0)};
  UTvector<int32_t> gaps_up(columns, -li_pen);
  UTvector<int32_t> gaps_left(columns, -li_pen);
  int32_t* above = cells[0].data() + EDGE;
  int32_t* now = cells[1].data() + EDGE;
  int32_t* const after_up = gaps_up.data() + EDGE;
  int32_t* const after_left = gaps_left.data() + EDGE;
  BestCell best;
  for (int32_t i = 1; i <= n - 2; ++i) {
    const int32_t* s = table[rows[i]];
    const FlagRow row_flags = flags[i];
    for (int32_t j = 1; j <= m - 2; ++j) {
      const int32_t diagonal = above[j - CODON] + s[j];
      const int32_t up = after_up[j];
      const int32_t left = after_left[j - CODON];
      const int32_t shift = now[j - 1] - fs_pen;
      const int32_t h = std::max(std::max(std::max(diagonal, up), std::max(left, 0)), shift);
      now[j] = h;
      row_flags[j] = static_cast<uint8_t>((h == diagonal ? MOVE_DIAGONAL : 0) | (h == up ? MOVE_UP : 0) |
                                          (h == left ? MOVE_LEFT : 0) | (h == shift ? SHIFT_IN_COLUMNS : 0) |
                                          (h == 0 ? CELL_ZERO : 0));
      after_up[j] = h - (h == up ? ld_pen : li_pen);
      after_left[j] = h - (h == left ? ld_pen : li_pen);
      if (h > best.score) best = {h, i, j};
    }
    std::swap(above, now);
  }
  return best;
}

// The move by which the path enters a cell, seen from the move by which it leaves it. A gap that was charged
// as an extension has to go on; 0 where the path begins.
uint8_t move_into(uint8_t cell, uint8_t next_move, bool shifts_stay_together) {
  const uint8_t gap = next_move & (MOVE_UP | MOVE_LEFT);
  if ((cell & gap) != 0) return gap;
  if ((cell & CELL_ZERO) != 0) return 0;
  using Preference = std::array<uint8_t, 4>;
  constexpr Preference USUAL = {MOVE_DIAGONAL, SHIFT_IN_COLUMNS, MOVE_UP, MOVE_LEFT};
  constexpr Preference SHIFT_FIRST = {SHIFT_IN_COLUMNS, MOVE_DIAGONAL, MOVE_UP, MOVE_LEFT};
  constexpr Preference SHIFT_LAST = {MOVE_DIAGONAL, MOVE_UP, MOVE_LEFT, SHIFT_IN_COLUMNS};
  const bool extends_shift = next_move == SHIFT_IN_COLUMNS;
  for (const uint8_t move : extends_shift ? shifts_stay_together ? SHIFT_FIRST : SHIFT_LAST : USUAL) {
    if ((cell & move) != 0) return move;
  }
  return 0;
}

}  // namespace

FramePath trace_frames(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table, int32_t ld_pen,
                       int32_t li_pen, int32_t fs_pen, int32_t fse_pen, MoveFlags& flags) {
  fit_flags(flags, n, m);
  const BestCell best = fill_frame_flags(m, rows, n, table, ld_pen, li_pen, fs_pen, flags);
  FramePath path;
  path.score = best.score;
  if (best.score <= 0) return path;
  int32_t i = best.row;
  int32_t j = best.column;
  uint8_t move = 0;
  while (i > 0 && j > 0 && (move = move_into(flags[i][j], move, fse_pen <= fs_pen)) != 0) {
    switch (move) {
      case MOVE_DIAGONAL:
        path.steps.push_back(FrameStep::MATCH);
        --i;
        j -= CODON;
        break;
      case MOVE_UP:
        path.steps.push_back(FrameStep::NO_CODON);
        --i;
        break;
      case MOVE_LEFT:
        path.steps.push_back(FrameStep::NO_RESIDUE);
        j -= CODON;
        break;
      default:
        path.steps.push_back(FrameStep::FRAME_SHIFT);
        --j;
    }
  }
  std::reverse(path.steps.begin(), path.steps.end());
  path.first_row = i + 1;
  path.first_base = j + CODON;
  return path;
}

}  // namespace zelvan
