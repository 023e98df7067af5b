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

int32_t nswli(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, int32_t extend,
              int32_t open, int32_t shift) {
  static Cell storage[4][MP_LEN];  // rows i, i-1, i-2, i-3 in rotation
  const int32_t columns = std::max(qlen - 1, 0);
  std::array<Cell*, 4> row;
  for (std::size_t k = 0; k < row.size(); ++k) {
    row[k] = storage[k];
    std::fill_n(row[k], columns, Cell());
  }
  int32_t best = -1;
  for (int32_t i = 1; i <= dlen - 2; ++i) {
    const int32_t* s = table[target[i]];
    Cell* now = row[0];
    for (int32_t j = 1; j <= qlen - 2; ++j) {
      const int32_t diagonal = row[3][j - 1].score + s[j];
      const int32_t vertical = gap_from(row[3][j], MOVE_UP, extend, open);
      const int32_t horizontal = gap_from(now[j - 1], MOVE_LEFT, extend, open);
      const int32_t shifted = row[1][j].score - shift;
      const int32_t h = std::max({0, diagonal, vertical, horizontal, shifted});
      now[j].score = h;
      now[j].flag =
          static_cast<uint8_t>(flag_if(h == diagonal, MOVE_DIAGONAL) | flag_if(h == vertical, MOVE_UP) |
                               flag_if(h == horizontal, MOVE_LEFT) | flag_if(h == shifted, SHIFT_IN_ROWS));
      best = std::max(best, h);
    }
    std::rotate(row.begin(), row.begin() + 3, row.end());
  }
  return best;
}

int32_t npswli2(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, int32_t extend,
                int32_t open, int32_t shift) {
  static Cell storage[2][COLUMNS];
  for (Cell* row : storage) std::fill_n(row, std::max(qlen - 1, 0) + EDGE, Cell());
  Cell* above = storage[0] + EDGE;
  Cell* now = storage[1] + EDGE;
  int32_t best = -1;
  for (int32_t i = 1; i <= dlen - 2; ++i) {
    const int32_t* s = table[target[i]];
    for (int32_t j = 1; j <= qlen - 2; ++j) {
      const int32_t diagonal = above[j - 3].score + s[j];
      const int32_t vertical = gap_from(above[j], MOVE_UP, extend, open);
      const int32_t horizontal = gap_from(now[j - 3], MOVE_LEFT, extend, open);
      const int32_t shifted = now[j - 1].score - shift;
      const int32_t h = std::max({0, diagonal, vertical, horizontal, shifted});
      now[j].score = h;
      now[j].flag =
          static_cast<uint8_t>(flag_if(h == diagonal, MOVE_DIAGONAL) | flag_if(h == vertical, MOVE_UP) |
                               flag_if(h == horizontal, MOVE_LEFT) | flag_if(h == shifted, SHIFT_IN_COLUMNS));
      best = std::max(best, h);
    }
    std::swap(above, now);
  }
  return best;
}

int32_t npswl(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, int32_t extend,
              int32_t shift) {
  static int32_t storage[2][COLUMNS];
  for (int32_t* row : storage) std::fill_n(row, std::max(qlen - 1, 0) + EDGE, 0);
  int32_t* above = storage[0] + EDGE;
  int32_t* now = storage[1] + EDGE;
  int32_t best = -1;
  for (int32_t i = 1; i <= dlen - 2; ++i) {
    const int32_t* s = table[target[i]];
    for (int32_t j = 1; j <= qlen - 2; ++j) {
      const int32_t h =
          std::max({0, above[j - 3] + s[j], above[j] - extend, now[j - 3] - extend, now[j - 1] - shift});
      now[j] = h;
      best = std::max(best, h);
    }
    std::swap(above, now);
  }
  return best;
}

}  // namespace zelvan
