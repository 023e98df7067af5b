#include "dna/frame_shift_traceback.h"

#include <algorithm>
#include <array>

#include "dna/frame_flags.h"
#include "dna/frame_shift_reference.h"

namespace zelvan {
namespace {

constexpr int32_t CODON = 3;

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
  const BestCell best =
      fill_frame_flags(m, rows, n, table, {ld_pen, li_pen, fs_pen}, best_instruction_set(), flags);
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
