#include "align/trace/path_search.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace zelvan {
namespace {

// One target position of a pair, with the one before it.
struct Row {
  const FlaggedPair& pair;
  int32_t j;
  FlagRow flags;
  FlagRow flags_above;  // of use where a path can come from there
  const int32_t* scores;

  Row(const FlaggedPair& of, int32_t at)
      : pair(of),
        j(at),
        flags(of.flags[at]),
        flags_above(of.flags[std::max(at - 1, of.flags.first)]),
        scores(of.table[of.target[at]]) {}
  bool is_zero(int32_t i) const { return (flags[i] & CELL_ZERO) != 0; }
  bool at_the_end(int32_t i) const { return i == pair.qlen - 2 || j == pair.dlen - 2; }
  // The move by which a cell continues a path, 0 for none.
  uint8_t move(int32_t i) const { return is_zero(i) ? 0 : pair.scheme.preferred[flags[i] & ALL_MOVES]; }
  // The penalties of the steps into a cell, whose predecessors have a value.
  int32_t up(int32_t i) const {
    return ((flags_above[i] & MOVE_UP) != 0 ? pair.gaps.extend : pair.gaps.open)[i - 1];
  }
  int32_t left(int32_t i) const {
    return ((flags[i - 1] & MOVE_LEFT) != 0 ? pair.gaps.extend : pair.gaps.open)[i - 1];
  }
};

// Keeps a path that has ended if its best is high enough and it spans more than one position of either
// sequence.
void keep_path(const PathRec& record, int32_t threshold, PathStore& store) {
  if (record.best < threshold) return;
  if (record.start_i < 1 || record.start_i == record.end_i || record.start_j == record.end_j) return;
  if (present(record, store.slots[static_cast<std::size_t>(record.start_i)]) == 0) addsco(record, store);
}

// Cell (i, j), value h > 0, continues the path of `from`.
void join_path(PathRec& cell, const PathRec& from, int32_t i, int32_t j, int32_t h, bool takes_tie) {
  const bool is_best = h > from.best || (takes_tie && h == from.best);
  cell = {from.start_i,
          from.start_j,
          is_best ? i : from.end_i,
          is_best ? j : from.end_j,
          is_best ? h : from.best,
          h};
}

// Carries the records of the row above to a row, and keeps the paths that end there.
void advance(const Row& row, const PathRec* prev, PathRec* cur, PathStore& store) {
  const int32_t j = row.j;
  for (int32_t i = 1; i <= row.pair.qlen - 2; ++i) {
    PathRec& cell = cur[i];
    int32_t h = 0;
    switch (row.move(i)) {
      case MOVE_DIAGONAL:
        h = prev[i - 1].score + row.scores[i];
        if (prev[i - 1].score == 0) {
          cell = {i, j, i, j, h, h};
        } else {
          join_path(cell, prev[i - 1], i, j, h, true);
        }
        break;
      case MOVE_UP:
        h = prev[i].score - row.up(i);
        join_path(cell, prev[i], i, j, h, true);
        break;
      case MOVE_LEFT:
        h = cur[i - 1].score - row.left(i);
        join_path(cell, cur[i - 1], i, j, h, row.pair.scheme.left_takes_ties);
        break;
      default:
        // What the record holds is left from two rows above: without a span it is never kept.
        cell.start_i = cell.end_i;
        cell.start_j = cell.end_j;
        break;
    }
    if (row.at_the_end(i)) {
      keep_path(cell, row.pair.threshold, store);
    } else if (h == 0 && prev[i - 1].best > 0) {
      keep_path(prev[i - 1], row.pair.threshold, store);
      cell.best = 0;
    }
    cell.score = h;
  }
}

// ---- High paths only

struct LiveCell {
  int32_t i;
  PathRec path;
};

// The record of cell (i, j), the first of its path that reaches the threshold: the path followed back to
// where it began gives its value.
PathRec first_high_cell(const FlaggedPair& pair, int32_t i, int32_t j) {
  PathRec path = {0, 0, i, j, 0, 0};
  int32_t h = 0;
  for (;;) {
    const Row row(pair, j);
    switch (row.move(i)) {
      case MOVE_UP:
        h -= row.up(i);
        --j;
        break;
      case MOVE_LEFT:
        h -= row.left(i);
        --i;
        break;
      default:
        h += row.scores[i];
        if (i == 1 || j == 1 || (row.flags_above[i - 1] & CELL_ZERO) != 0) {
          path.start_i = i;
          path.start_j = j;
          path.best = path.score = h;
          return path;
        }
        --i;
        --j;
        break;
    }
  }
}

// Whether a path from the same start that is no worse has ended already. Nothing comes of this one then, unless
// it rises further.
bool is_settled(const PathRec& path, const PathStore& store) {
  const UTvector<PathRec>& slot = store.slots[static_cast<std::size_t>(path.start_i)];
  return std::any_of(slot.begin(), slot.end(), [&](const PathRec& kept) {
    return kept.start_j == path.start_j && kept.best >= path.best;
  });
}

// Carries the live cells of the row above to a row, and keeps the paths that end there.
// In     above: by query position; high: the row's high cells; drop_below: settled paths whose cells are lower
//        are not followed any more. One that rises again is then taken up at its next high cell
// Out    here: by query position; has room for all
void advance_live(const Row& row, const UTvector<LiveCell>& above, const UTvector<int32_t>& high,
                  int32_t drop_below, UTvector<LiveCell>& here, PathStore& store) {
  const int32_t last_i = row.pair.qlen - 2, j = row.j;
  here.clear();
  std::size_t a = 0;  // in `above`: the first at i - 1 or behind
  std::size_t next_high = 0;
  for (int32_t i = 0;;) {
    // The next cell that continues a live one or begins to live.
    int32_t next = !here.empty() && here.back().i == i ? i + 1 : last_i + 1;
    while (a < above.size() && above[a].i < i) ++a;
    if (a < above.size()) next = std::min(next, std::max(above[a].i, i + 1));
    while (next_high < high.size() && high[next_high] <= i) ++next_high;
    if (next_high < high.size()) next = std::min(next, high[next_high]);
    if (next > last_i) return;
    i = next;

    while (a < above.size() && above[a].i < i - 1) ++a;
    const auto live_above = [&](std::size_t k, int32_t position) {
      return k < above.size() && above[k].i == position ? &above[k].path : nullptr;
    };
    const PathRec* const diagonal = live_above(a, i - 1);
    const uint8_t move = row.move(i);
    const PathRec* from = nullptr;
    int32_t h = 0;
    if (move == MOVE_DIAGONAL && diagonal != nullptr) {
      from = diagonal;
      h = from->score + row.scores[i];
    } else if (move == MOVE_UP) {
      from = live_above(diagonal != nullptr ? a + 1 : a, i);
      if (from != nullptr) h = from->score - row.up(i);
    } else if (move == MOVE_LEFT && !here.empty() && here.back().i == i - 1) {
      from = &here.back().path;
      h = from->score - row.left(i);
    }
    here.push_back({i, {}});  // made in its place: a record put together elsewhere is slow to copy
    LiveCell& cell = here.back();
    if (from != nullptr) {
      join_path(cell.path, *from, i, j, h, move != MOVE_LEFT || row.pair.scheme.left_takes_ties);
    } else if (move != 0 && (row.flags[i] & CELL_HIGH) != 0) {
      cell.path = first_high_cell(row.pair, i, j);
    }
    const bool lives = cell.path.score > 0;
    if (row.at_the_end(i)) {
      if (lives) keep_path(cell.path, row.pair.threshold, store);
    } else if (move == 0 && diagonal != nullptr) {
      keep_path(*diagonal, row.pair.threshold, store);
    }
    if (!lives || (cell.path.score < drop_below && is_settled(cell.path, store))) here.pop_back();
  }
}

}  // namespace

void find_all_paths(const FlaggedPair& pair, PathStore& store) {
  const auto length = static_cast<std::size_t>(pair.qlen);
  UTvector<PathRec> rows[2] = {UTvector<PathRec>(length), UTvector<PathRec>(length)};
  for (UTvector<PathRec>& row : rows) {
    for (int32_t i = 0; i < pair.qlen; ++i) row[static_cast<std::size_t>(i)] = {i, 1, i, 1, 0, 0};
  }
  PathRec* prev = rows[0].data();
  PathRec* cur = rows[1].data();
  for (int32_t j = 1; j <= pair.dlen - 2; ++j) {
    advance(Row(pair, j), prev, cur, store);
    std::swap(prev, cur);
  }
}

void find_high_paths(const FlaggedPair& pair, const FlagSweep& sweep, PathStore& store) {
  if (sweep.high_rows.empty()) return;
  // What falls no deeper below the threshold than the best is above it may well rise again.
  const int32_t low = pair.threshold - (sweep.best - pair.threshold);
  UTvector<LiveCell> above, here;
  above.reserve(static_cast<std::size_t>(pair.qlen));
  here.reserve(static_cast<std::size_t>(pair.qlen));  // records are not moved while others are made of them
  HighCells high;
  const UTvector<int32_t> none;
  auto next_high_row = sweep.high_rows.begin();
  for (int32_t j = 1; j <= pair.dlen - 2; ++j) {
    if (above.empty()) {
      if (next_high_row == sweep.high_rows.end()) return;
      j = *next_high_row;
    }
    const bool is_high = next_high_row != sweep.high_rows.end() && j == *next_high_row;
    if (is_high) {
      find_high_cells(pair.flags, j, high);
      ++next_high_row;
    }
    const int32_t drop_below = next_high_row == sweep.high_rows.end() ? INT32_MAX : low;
    advance_live(Row(pair, j), above, is_high ? high.of_row(j) : none, drop_below, here, store);
    std::swap(above, here);
  }
}

}  // namespace zelvan
