#include "align/scan/scan_reference.h"

#include <algorithm>

#include "align/cell_flags.h"
#include "seq/sequence.h"

namespace zelvan {
namespace {

struct Cell {
  uint8_t flag = 0;
  int32_t score = 0;
};

// Penalties of query position i.
struct UniformGaps {
  int32_t extend, open;
  int32_t extend_at(int32_t) const { return extend; }
  int32_t open_at(int32_t) const { return open; }
};
struct PositionGaps {
  const int32_t* extend;  // row of the gap character
  const int32_t* open;    // row of the insertion-gap character
  int32_t extend_at(int32_t i) const { return extend[i - 1]; }
  int32_t open_at(int32_t i) const { return open[i - 1]; }
};

template <class Gaps>
int32_t linear_scan(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                    const Gaps& gaps) {
  static int32_t row[MP_LEN];
  int32_t best = -1;
  std::fill_n(row, std::max(qlen - 1, 0), 0);
  for (int32_t j = 1; j <= dlen - 2; ++j) {
    const int32_t* t = table[target[j]];
    int32_t left = 0;
    for (int32_t i = 1; i <= qlen - 2; ++i) {
      const int32_t penalty = gaps.extend_at(i);
      const int32_t h = std::max({0, row[i - 1] + t[i], left - penalty, row[i] - penalty});
      row[i - 1] = left;
      left = h;
      best = std::max(best, h);
    }
    // The last column is not written back: a gap after the last query residue never raises a local score.
  }
  return best;
}

template <class Gaps>
int32_t flagged_scan(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                     const Gaps& gaps) {
  static Cell row[MP_LEN];
  int32_t best = -1;
  std::fill_n(row, std::max(qlen - 1, 0), Cell());
  for (int32_t j = 1; j <= dlen - 2; ++j) {
    const int32_t* t = table[target[j]];
    Cell left;
    for (int32_t i = 1; i <= qlen - 2; ++i) {
      const Cell up = row[i];
      const int32_t gap_up = up.score - ((up.flag & MOVE_UP) != 0 ? gaps.extend_at(i) : gaps.open_at(i));
      const int32_t gap_left =
          left.score - ((left.flag & MOVE_LEFT) != 0 ? gaps.extend_at(i) : gaps.open_at(i));
      const int32_t diagonal = row[i - 1].score + t[i];
      const int32_t h = std::max({0, diagonal, gap_left, gap_up});
      row[i - 1] = left;
      left.score = h;
      left.flag = static_cast<uint8_t>((h == diagonal ? MOVE_DIAGONAL : 0) | (h == gap_up ? MOVE_UP : 0) |
                                       (h == gap_left ? MOVE_LEFT : 0));
      best = std::max(best, h);
    }
  }
  return best;
}

PositionGaps gap_rows(const LookupTable& table, const ScoreMatrix& matrix, const Params* p) {
  return {table[residue_code(matrix, p->GAP_CHARACTER)], table[residue_code(matrix, p->IGAP_CHARACTER)]};
}

}  // namespace

int32_t swl(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, int32_t penalty) {
  return linear_scan(qlen, target, dlen, table, UniformGaps{penalty, penalty});
}

int32_t swli(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, int32_t extend,
             int32_t open) {
  return flagged_scan(qlen, target, dlen, table, UniformGaps{extend, open});
}

int32_t swlv(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
             const ScoreMatrix& matrix, const Params* p) {
  return linear_scan(qlen, target, dlen, table, gap_rows(table, matrix, p));
}

int32_t swliv(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
              const ScoreMatrix& matrix, const Params* p) {
  return flagged_scan(qlen, target, dlen, table, gap_rows(table, matrix, p));
}

}  // namespace zelvan
