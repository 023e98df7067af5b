#include "dna/frame_shift_traceback.h"

#include <algorithm>
#include <array>

#include "dna/frame_shift_reference.h"

namespace {

// Columns -2..0 are the zero boundary: column j stands at index j + 3 of the rows kept here.
constexpr int32_t EDGE = 3;
constexpr int32_t CODON = 3;

struct Summit {
  int32_t score = -1;
  int32_t row = 0;
  int32_t column = 0;
};

uint8_t moves_of_cell(int32_t h, int32_t diagonal, int32_t up, int32_t left, int32_t shift) {
  uint8_t flags = h == 0 ? CELL_ZERO : uint8_t{0};
  if (h == diagonal) flags |= MOVE_DIAGONAL;
  if (h == up) flags |= MOVE_UP;
  if (h == left) flags |= MOVE_LEFT;
  if (h == shift) flags |= SHIFT_IN_COLUMNS;
  return flags;
}

// The recurrence of npswli2, its flags kept for every cell.
Summit fill_frame_flags(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table, int32_t ld_pen,
                        int32_t li_pen, int32_t fs_pen, MoveFlags& flags) {
  UTvector<int32_t> storage[2];
  for (UTvector<int32_t>& row : storage) row.assign(static_cast<std::size_t>(std::max(m, 1) + EDGE), 0);
  int32_t* above = storage[0].data() + EDGE;
  int32_t* now = storage[1].data() + EDGE;
  Summit summit;
  for (int32_t i = 1; i <= n - 2; ++i) {
    const int32_t* s = table[rows[i]];
    const uint8_t* flags_above = flags[i - 1];
    uint8_t* flags_now = flags[i];
    for (int32_t j = 1; j <= m - 2; ++j) {
      const bool extends_left = j > CODON && (flags_now[j - CODON] & MOVE_LEFT) != 0;
      const bool extends_up = (flags_above[j] & MOVE_UP) != 0;
      const int32_t diagonal = above[j - CODON] + s[j];
      const int32_t up = above[j] - (extends_up ? ld_pen : li_pen);
      const int32_t left = now[j - CODON] - (extends_left ? ld_pen : li_pen);
      const int32_t shift = now[j - 1] - fs_pen;
      const int32_t h = std::max({0, diagonal, up, left, shift});
      now[j] = h;
      flags_now[j] = moves_of_cell(h, diagonal, up, left, shift);
      if (h > summit.score) summit = {h, i, j};
    }
    std::swap(above, now);
  }
  return summit;
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
  std::fill_n(flags[0], flags.cols, uint8_t{0});
  const Summit summit = fill_frame_flags(m, rows, n, table, ld_pen, li_pen, fs_pen, flags);
  FramePath path;
  path.score = summit.score;
  if (summit.score <= 0) return path;
  int32_t i = summit.row;
  int32_t j = summit.column;
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
