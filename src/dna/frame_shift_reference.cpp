#include "dna/frame_shift_reference.h"

#include <algorithm>
#include <array>

#include "align/cell_flags.h"
#include "seq/sequence.h"

namespace zelvan {
namespace {

struct Cell {
  int32_t score = 0;
  uint8_t flag = 0;
};

// Column j stands at index j + 3, so that columns -2..0 are the zero boundary.
constexpr int32_t EDGE = 3;
constexpr int32_t COLUMNS = MP_LEN + EDGE;

int32_t gap_from(const Cell& cell, uint8_t same_direction, int32_t extend, int32_t open) {
  return cell.score - ((cell.flag & same_direction) != 0 ? extend : open);
}

uint8_t flag_if(bool equal, uint8_t flag) {
  return equal ? flag : uint8_t{0};
}

}  // namespace

int32_t nswli(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table, int32_t ld_pen,
              int32_t li_pen, int32_t fs_pen) {
  static Cell storage[4][MP_LEN];  // rows i, i-1, i-2, i-3 in rotation
  const int32_t columns = std::max(m - 1, 0);
  std::array<Cell*, 4> row;
  for (std::size_t k = 0; k < row.size(); ++k) {
    row[k] = storage[k];
    std::fill_n(row[k], columns, Cell());
  }
  int32_t best = -1;
  for (int32_t i = 1; i <= n - 2; ++i) {
    const int32_t* s = table[rows[i]];
    Cell* now = row[0];
    for (int32_t j = 1; j <= m - 2; ++j) {
      const int32_t diagonal = row[3][j - 1].score + s[j];
      const int32_t vertical = gap_from(row[3][j], MOVE_UP, ld_pen, li_pen);
      const int32_t horizontal = gap_from(now[j - 1], MOVE_LEFT, ld_pen, li_pen);
      const int32_t shift = row[1][j].score - fs_pen;
      const int32_t h = std::max({0, diagonal, vertical, horizontal, shift});
      now[j].score = h;
      now[j].flag =
          static_cast<uint8_t>(flag_if(h == diagonal, MOVE_DIAGONAL) | flag_if(h == vertical, MOVE_UP) |
                               flag_if(h == horizontal, MOVE_LEFT) | flag_if(h == shift, SHIFT_IN_ROWS));
      best = std::max(best, h);
    }
    std::rotate(row.begin(), row.begin() + 3, row.end());
  }
  return best;
}

int32_t npswli2(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table, int32_t ld_pen,
                int32_t li_pen, int32_t fs_pen) {
  static Cell storage[2][COLUMNS];
  for (Cell* row : storage) std::fill_n(row, std::max(m - 1, 0) + EDGE, Cell());
  Cell* above = storage[0] + EDGE;
  Cell* now = storage[1] + EDGE;
  int32_t best = -1;
  for (int32_t i = 1; i <= n - 2; ++i) {
    const int32_t* s = table[rows[i]];
    for (int32_t j = 1; j <= m - 2; ++j) {
      const int32_t diagonal = above[j - 3].score + s[j];
      const int32_t vertical = gap_from(above[j], MOVE_UP, ld_pen, li_pen);
      const int32_t horizontal = gap_from(now[j - 3], MOVE_LEFT, ld_pen, li_pen);
      const int32_t shift = now[j - 1].score - fs_pen;
      const int32_t h = std::max({0, diagonal, vertical, horizontal, shift});
      now[j].score = h;
      now[j].flag =
          static_cast<uint8_t>(flag_if(h == diagonal, MOVE_DIAGONAL) | flag_if(h == vertical, MOVE_UP) |
                               flag_if(h == horizontal, MOVE_LEFT) | flag_if(h == shift, SHIFT_IN_COLUMNS));
      best = std::max(best, h);
    }
    std::swap(above, now);
  }
  return best;
}

int32_t npswl(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table, int32_t ld_pen,
              int32_t fs_pen) {
  static int32_t storage[2][COLUMNS];
  for (int32_t* row : storage) std::fill_n(row, std::max(m - 1, 0) + EDGE, 0);
  int32_t* above = storage[0] + EDGE;
  int32_t* now = storage[1] + EDGE;
  int32_t best = -1;
  for (int32_t i = 1; i <= n - 2; ++i) {
    const int32_t* s = table[rows[i]];
    for (int32_t j = 1; j <= m - 2; ++j) {
      const int32_t h =
          std::max({0, above[j - 3] + s[j], above[j] - ld_pen, now[j - 3] - ld_pen, now[j - 1] - fs_pen});
      now[j] = h;
      best = std::max(best, h);
    }
    std::swap(above, now);
  }
  return best;
}

}  // namespace zelvan
