#include "align/trace/traceback.h"

#include <algorithm>
#include <utility>

#include "driver/search_mode.h"

namespace zelvan {
namespace {

// A path that comes from above the rows looked at: its start is not worked out before it is needed.
constexpr int32_t UNKNOWN = -1;

// One pair, its flags filled.
struct Pair {
  int32_t qlen;
  int32_t dlen;
  const int8_t* target;
  const LookupTable& table;
  GapRows gaps;
  const PathScheme& scheme;
  const MoveFlags& flags;
  int32_t threshold;

  int32_t last_i() const { return qlen - 2; }
  int32_t last_j() const { return dlen - 2; }
  int32_t score(int32_t i, int32_t j) const { return table[target[j]][i]; }
  bool is_zero(int32_t i, int32_t j) const { return (flags[j][i] & CELL_ZERO) != 0; }
  bool at_the_end(int32_t i, int32_t j) const { return i == qlen - 2 || j == dlen - 2; }
  // The move by which cell (i, j) continues a path, 0 for none.
  uint8_t move(int32_t i, int32_t j) const { return is_zero(i, j) ? 0 : scheme.preferred[flags[j][i]]; }
  // The penalties of the steps into cell (i, j).
  int32_t up(int32_t i, int32_t j) const {
    return ((flags[j - 1][i] & MOVE_UP) != 0 ? gaps.extend : gaps.open)[i - 1];
  }
  int32_t left(int32_t i, int32_t j) const {
    return ((flags[j][i - 1] & MOVE_LEFT) != 0 ? gaps.extend : gaps.open)[i - 1];
  }
};

bool spans(const PathRec& record) {
  return record.start_i >= 1 && record.start_i != record.end_i && record.start_j != record.end_j;
}

// Keeps a path that has ended if it spans more than one position of either sequence.
void keep_path(const PathRec& record, PathStore& store) {
  if (!spans(record)) return;
  if (present(record, store.slots[static_cast<std::size_t>(record.start_i)]) == 0) addsco(record, store);
}

// Follows the path of cell (i, j), value h > 0, back to its start.
void find_start(const Pair& pair, int32_t i, int32_t j, int32_t h, PathRec& cell) {
  for (;;) {
    switch (pair.move(i, j)) {
      case MOVE_DIAGONAL:
        h -= pair.score(i, j);
        if (h == 0) {
          cell.start_i = i;
          cell.start_j = j;
          return;
        }
        --i;
        --j;
        break;
      case MOVE_UP:
        h += pair.up(i, j);
        --j;
        break;
      default:
        h += pair.left(i, j);
        --i;
        break;
    }
  }
}

// Cell (i, j), value h > 0, continues the path of `from`.
void join_path(const Pair& pair, PathRec& cell, const PathRec& from, int32_t i, int32_t j, int32_t h,
               bool takes_tie) {
  cell.start_i = from.start_i;
  cell.start_j = from.start_j;
  if (h > from.best || (takes_tie && h == from.best)) {
    cell.end_i = i;
    cell.end_j = j;
    cell.best = h;
    if (from.start_i == UNKNOWN && h >= pair.threshold) find_start(pair, i, j, h, cell);
  } else {
    cell.end_i = from.end_i;
    cell.end_j = from.end_j;
    cell.best = from.best;
  }
}

// Carries the records of the row above to row j, and keeps the paths that end there.
void advance(const Pair& pair, int32_t j, PathRec* prev, PathRec* cur, PathStore& store) {
  for (int32_t i = 1; i <= pair.last_i(); ++i) {
    PathRec& cell = cur[i];
    int32_t h = 0;
    switch (pair.move(i, j)) {
      case MOVE_DIAGONAL:
        h = prev[i - 1].score + pair.score(i, j);
        if (prev[i - 1].score == 0) {
          cell = {i, j, i, j, h, cell.score};
        } else {
          join_path(pair, cell, prev[i - 1], i, j, h, true);
        }
        break;
      case MOVE_UP:
        h = prev[i].score - pair.up(i, j);
        join_path(pair, cell, prev[i], i, j, h, true);
        break;
      case MOVE_LEFT:
        h = cur[i - 1].score - pair.left(i, j);
        join_path(pair, cell, cur[i - 1], i, j, h, pair.scheme.left_takes_ties);
        break;
      default:
        // What the record holds is left from two rows above: without a span it is never kept.
        cell.start_i = cell.end_i;
        cell.start_j = cell.end_j;
        break;
    }
    if (pair.at_the_end(i, j)) {
      if (cell.best >= pair.threshold) keep_path(cell, store);
    } else if (h == 0 && prev[i - 1].best > 0) {
      if (prev[i - 1].best >= pair.threshold) keep_path(prev[i - 1], store);
      cell.best = 0;
    }
    cell.score = h;
  }
}

// Paths that go on below the last cell of at least the threshold: their best cells no longer change, what
// counts is whether they end where they are kept.
struct OpenPaths {
  UTvector<PathRec> paths = UTvector<PathRec>(1);  // [1..]; best 0 once nothing more can come of a path
  UTvector<int32_t> row;                           // [query position]: number of the cell's path, 0 for none
};

bool same_path(const PathRec& a, const PathRec& b) {
  return a.start_i == b.start_i && a.start_j == b.start_j && a.end_i == b.end_i && a.end_j == b.end_j;
}

// Numbers the paths of a row that the store does not hold as good or better.
OpenPaths open_paths(const Pair& pair, const PathRec* row, const PathStore& store) {
  OpenPaths open;
  open.row.assign(static_cast<std::size_t>(pair.qlen), 0);
  for (int32_t i = 1; i <= pair.last_i(); ++i) {
    const PathRec& record = row[i];
    if (record.score == 0 || record.best < pair.threshold || !spans(record)) continue;
    const UTvector<PathRec>& slot = store.slots[static_cast<std::size_t>(record.start_i)];
    if (std::any_of(slot.begin(), slot.end(), [&](const PathRec& kept) {
          return kept.start_j == record.start_j && kept.best >= record.best;
        })) {
      continue;
    }
    if (!same_path(open.paths.back(), record)) open.paths.push_back(record);
    open.row[static_cast<std::size_t>(i)] = static_cast<int32_t>(open.paths.size()) - 1;
  }
  return open;
}

// Keeps an open path, which settles those from the same start that are no better.
void settle(int32_t number, OpenPaths& open, PathStore& store) {
  const PathRec path = open.paths[static_cast<std::size_t>(number)];
  if (path.best == 0) return;
  keep_path(path, store);
  for (PathRec& other : open.paths) {
    if (other.start_i == path.start_i && other.start_j == path.start_j && other.best <= path.best) {
      other.best = 0;
    }
  }
}

// Follows the open paths through the rows from `j` on until none is left.
void follow_open_paths(const Pair& pair, int32_t j, OpenPaths& open, PathStore& store) {
  UTvector<int32_t> next(static_cast<std::size_t>(pair.qlen), 0);
  const auto is_open = [&](int32_t number) { return open.paths[static_cast<std::size_t>(number)].best > 0; };
  int32_t first = 1;  // the open paths lie at query positions first .. last
  int32_t last = pair.last_i();
  for (; j <= pair.last_j() && first <= last; ++j) {
    std::fill(next.begin(), next.end(), 0);
    const int32_t* above = open.row.data();
    int32_t* here = next.data();
    int32_t next_first = pair.qlen, next_last = 0;
    for (int32_t i = first; i <= pair.last_i() && (i <= last + 1 || here[i - 1] != 0); ++i) {
      const uint8_t move = pair.move(i, j);
      int32_t number = 0;
      if (move == MOVE_DIAGONAL) number = above[i - 1];
      if (move == MOVE_UP) number = above[i];
      if (move == MOVE_LEFT) number = here[i - 1];
      if (pair.at_the_end(i, j)) {
        if (number != 0) settle(number, open, store);
      } else if (above[i - 1] != 0 && pair.is_zero(i, j)) {
        settle(above[i - 1], open, store);
      }
      if (number != 0 && !is_open(number)) number = 0;
      here[i] = number;
      if (number != 0) {
        next_first = std::min(next_first, i);
        next_last = i;
      }
    }
    first = next_first;
    last = next_last;
    open.row.swap(next);
  }
}

// The paths of a pair, row by row. A path that is kept has a cell of at least the threshold: what lies above
// the first row with such a cell is looked at only where a path leads back there, and below the last one only
// the paths that are still open are followed.
void find_paths(const Pair& pair, const FlagSweep& sweep, PathStore& store) {
  if (sweep.first_row == 0) return;
  const auto length = static_cast<std::size_t>(pair.qlen);
  UTvector<PathRec> rows[2] = {UTvector<PathRec>(length), UTvector<PathRec>(length)};
  for (UTvector<PathRec>& row : rows) {
    for (int32_t i = 0; i < pair.qlen; ++i) row[static_cast<std::size_t>(i)] = {i, 1, i, 1, 0, 0};
  }
  PathRec* prev = rows[0].data();
  PathRec* cur = rows[1].data();
  for (int32_t i = 1; i <= pair.last_i(); ++i) {
    prev[i].score = sweep.values[static_cast<std::size_t>(i)];
    if (prev[i].score > 0) prev[i].start_i = UNKNOWN;
  }
  for (int32_t j = sweep.first_row; j <= sweep.last_row; ++j) {
    advance(pair, j, prev, cur, store);
    std::swap(prev, cur);
  }
  OpenPaths open = open_paths(pair, prev, store);
  follow_open_paths(pair, sweep.last_row + 1, open, store);
}

// A gap that adds to the score continues whatever record it meets: then every row counts.
void take_every_row(FlagSweep& sweep, int32_t qlen, int32_t dlen) {
  sweep.first_row = 1;
  sweep.last_row = dlen - 2;
  sweep.values.assign(static_cast<std::size_t>(qlen), 0);
}

int32_t align(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, const GapRows& gaps,
              const PathScheme& scheme, int32_t threshold, PathStore& store, MoveFlags& flags) {
  empty_store(store, qlen);
  FlagSweep sweep = fill_flags(qlen, target, dlen, table, gaps, threshold, best_instruction_set(), flags);
  if (sweep.best < 0) return sweep.best;
  if (any_negative(gaps, qlen)) take_every_row(sweep, qlen, dlen);
  find_paths({qlen, dlen, target, table, gaps, scheme, flags, threshold}, sweep, store);
  return sweep.best;
}

bool gaps_by_position(const Params* p) {
  return decode_mode(p->MODE).gaps_by_position;
}

// The penalties of every query position: the table's row, or one value throughout.
const int32_t* penalties(const LookupTable& table, const ScoreMatrix& matrix, char gap_character,
                         bool from_table, int32_t value, int32_t qlen, UTvector<int32_t>& storage) {
  if (from_table) return table[residue_code(matrix, gap_character)];
  storage.assign(static_cast<std::size_t>(qlen), value);
  return storage.data();
}

}  // namespace

int32_t swpathl(const int8_t*, int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                int32_t ld_pen, PathStore& out_store, MoveFlags& out_flags, const ScoreMatrix& matrix,
                const Params* p) {
  UTvector<int32_t> storage;
  const int32_t* row = penalties(table, matrix, p->GAP_CHARACTER, gaps_by_position(p), ld_pen, qlen, storage);
  return align(qlen, target, dlen, table, {row, row}, LINEAR_PATHS, p->MIN_SCORE, out_store, out_flags);
}

int32_t swpathli(const int8_t*, int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                 int32_t ld_pen, int32_t li_pen, PathStore& out_store, MoveFlags& out_flags,
                 const ScoreMatrix& matrix, const Params* p) {
  UTvector<int32_t> extend_storage, open_storage;
  const bool from_table = gaps_by_position(p);
  const GapRows gaps = {penalties(table, matrix, p->GAP_CHARACTER, from_table, ld_pen, qlen, extend_storage),
                        penalties(table, matrix, p->IGAP_CHARACTER, from_table, li_pen, qlen, open_storage)};
  return align(qlen, target, dlen, table, gaps, FLAGGED_PATHS, p->MIN_SCORE, out_store, out_flags);
}

UTvector<PathRec> align_pair(const SeqRec& query, const SeqRec& target, const LookupTable& table,
                             int32_t threshold, MoveFlags& out_flags, const ScoreMatrix& matrix, Params* p) {
  const SearchMode mode = decode_mode(p->MODE);
  if (mode.comparison != Comparison::PROTEINS) return {};
  PathStore store;
  fit_flags(out_flags, target.len, query.len);
  const int32_t kept = std::exchange(p->MIN_SCORE, threshold);
  if (mode.affine) {
    swpathli(query.seq, query.len, target.seq, target.len, table, p->LD_PEN, p->LI_PEN, store, out_flags,
             matrix, p);
  } else {
    swpathl(query.seq, query.len, target.seq, target.len, table, p->LD_PEN, store, out_flags, matrix, p);
  }
  p->MIN_SCORE = kept;
  return dosort(store);
}

}  // namespace zelvan
