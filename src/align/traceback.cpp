#include "align/traceback.h"

#include <algorithm>
#include <array>

#include "util/failure.h"
#include "util/streams.h"

namespace {

// The two schemes: what a gap costs, and which move a path follows when several reach the cell's value.
// preferred[flags] is that move, 0 without one.
struct LinearScheme {
  static constexpr std::array<uint8_t, 8> preferred = {0,         MOVE_DIAGONAL, MOVE_UP, MOVE_DIAGONAL,
                                                       MOVE_LEFT, MOVE_DIAGONAL, MOVE_UP, MOVE_DIAGONAL};
  static constexpr bool left_takes_ties = true;
  const int32_t* penalty;  // [i-1]
  int32_t up(int32_t i, uint8_t) const { return penalty[i - 1]; }
  int32_t left(int32_t i, uint8_t) const { return penalty[i - 1]; }
};
struct FlaggedScheme {
  static constexpr std::array<uint8_t, 8> preferred = {0,         MOVE_DIAGONAL, MOVE_UP, MOVE_UP,
                                                       MOVE_LEFT, MOVE_LEFT,     MOVE_UP, MOVE_UP};
  static constexpr bool left_takes_ties = false;
  const int32_t* extend;  // [i-1]
  const int32_t* open;
  int32_t up(int32_t i, uint8_t flags) const { return ((flags & MOVE_UP) != 0 ? extend : open)[i - 1]; }
  int32_t left(int32_t i, uint8_t flags) const { return ((flags & MOVE_LEFT) != 0 ? extend : open)[i - 1]; }
};

// Keeps a path that has ended if it spans more than one position of either sequence.
void keep_path(const PathRec& record, PathStore& store) {
  if (record.start_i < 1 || record.start_i == record.end_i || record.start_j == record.end_j) return;
  if (present(record, store.slots[static_cast<std::size_t>(record.start_i)]) == 0) addsco(record, store);
}

// Cell (i, j) of value `h` continues the path of `from`.
void join_path(PathRec& cell, const PathRec& from, int32_t i, int32_t j, int32_t h, bool takes_tie) {
  cell.start_i = from.start_i;
  cell.start_j = from.start_j;
  if (h > from.best || (takes_tie && h == from.best)) {
    cell.end_i = i;
    cell.end_j = j;
    cell.best = h;
  } else {
    cell.end_i = from.end_i;
    cell.end_j = from.end_j;
    cell.best = from.best;
  }
}

UTvector<PathRec> first_row(int32_t qlen) {
  UTvector<PathRec> row(static_cast<std::size_t>(qlen));
  for (int32_t i = 0; i < qlen; ++i) {
    PathRec& record = row[static_cast<std::size_t>(i)];
    record.start_i = record.end_i = i;
    record.start_j = record.end_j = 1;
  }
  return row;
}

void empty_store(PathStore& store, int32_t qlen) {
  store.slots.resize(static_cast<std::size_t>(qlen));
  for (UTvector<PathRec>& slot : store.slots) slot.clear();
  store.total = 0;
}

template <class Scheme>
int32_t find_paths(const Scheme& scheme, int32_t qlen, const int8_t* target, int32_t dlen,
                   const LookupTable& table, int32_t threshold, PathStore& store, MoveFlags& flags) {
  empty_store(store, qlen);
  UTvector<PathRec> rows[2] = {first_row(qlen), first_row(qlen)};
  PathRec* prev = rows[0].data();
  PathRec* cur = rows[1].data();
  std::fill_n(flags[0], qlen - 1, uint8_t{0});
  int32_t overall = -1;
  for (int32_t j = 1; j <= dlen - 2; ++j) {
    const int32_t* scores = table[target[j]];
    const uint8_t* above = flags[j - 1];
    uint8_t* here = flags[j];
    here[0] = 0;
    for (int32_t i = 1; i <= qlen - 2; ++i) {
      PathRec& cell = cur[i];
      const int32_t diagonal = scores[i] + prev[i - 1].score;
      const int32_t up = prev[i].score - scheme.up(i, above[i]);
      const int32_t left = cur[i - 1].score - scheme.left(i, here[i - 1]);
      const int32_t h = std::max(std::max(0, diagonal), std::max(up, left));
      here[i] = static_cast<uint8_t>((h == diagonal ? MOVE_DIAGONAL : 0) | (h == up ? MOVE_UP : 0) |
                                     (h == left ? MOVE_LEFT : 0));
      if (h > 0) {
        switch (Scheme::preferred[here[i]]) {
          case MOVE_DIAGONAL:
            if (prev[i - 1].score == 0) {
              cell = {i, j, i, j, h, cell.score};
            } else {
              join_path(cell, prev[i - 1], i, j, h, true);
            }
            break;
          case MOVE_UP:
            join_path(cell, prev[i], i, j, h, true);
            break;
          default:
            join_path(cell, cur[i - 1], i, j, h, Scheme::left_takes_ties);
            break;
        }
      } else {
        // What the record holds is left from two rows above: without a span it is never kept.
        cell.start_i = cell.end_i;
        cell.start_j = cell.end_j;
      }
      if (i == qlen - 2 || j == dlen - 2) {
        if (cell.best >= threshold) keep_path(cell, store);
      } else if (h == 0 && prev[i - 1].best > 0) {
        if (prev[i - 1].best >= threshold) keep_path(prev[i - 1], store);
        cell.best = 0;
      }
      cell.score = h;
      overall = std::max(overall, h);
    }
    std::swap(prev, cur);
  }
  return overall;
}

// The penalties of every query position: the table's row, or one value throughout.
const int32_t* penalties(const LookupTable& table, const ScoreMatrix& matrix, char gap_character,
                         bool from_table, int32_t value, int32_t qlen, UTvector<int32_t>& storage) {
  if (from_table) return table[residue_code(matrix, gap_character)];
  storage.assign(static_cast<std::size_t>(qlen), value);
  return storage.data();
}

template <class Scheme>
void trace(const int8_t* query, const int8_t* target, const PathRec& path, const MoveFlags& flags,
           AlignedRows& out_rows, int8_t gap) {
  out_rows.query.clear();
  out_rows.target.clear();
  int32_t i = path.end_i;
  int32_t j = path.end_j;
  while (i >= path.start_i || j >= path.start_j) {
    switch (Scheme::preferred[flags[j][i]]) {
      case MOVE_DIAGONAL:
        out_rows.query.push_back(query[i--]);
        out_rows.target.push_back(target[j--]);
        break;
      case MOVE_UP:
        out_rows.query.push_back(gap);
        out_rows.target.push_back(target[j--]);
        break;
      case MOVE_LEFT:
        out_rows.query.push_back(query[i--]);
        out_rows.target.push_back(gap);
        break;
      default:
        UTend_input(std_err, "Disaster in aliseq\n");
    }
  }
  out_rows.length = static_cast<int32_t>(out_rows.query.size());
  reval(out_rows.query.data(), 0, out_rows.length - 1);
  reval(out_rows.target.data(), 0, out_rows.length - 1);
  out_rows.query.push_back(0);
  out_rows.target.push_back(0);
}

// Heap sort on `best`, highest first.
void hsort(UTvector<PathRec>& paths) {
  if (paths.size() < 2) return;
  PathRec* ra = paths.data() - 1;  // 1-based
  std::size_t l = paths.size() / 2 + 1;
  std::size_t ir = paths.size();
  for (;;) {
    PathRec held;
    if (l > 1) {
      held = ra[--l];
    } else {
      held = ra[ir];
      ra[ir] = ra[1];
      if (--ir == 1) {
        ra[1] = held;
        return;
      }
    }
    std::size_t i = l;
    for (std::size_t j = 2 * l; j <= ir; j *= 2) {
      if (j < ir && ra[j].best > ra[j + 1].best) ++j;
      if (held.best <= ra[j].best) break;
      ra[i] = ra[j];
      i = j;
    }
    ra[i] = held;
  }
}

}  // namespace

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

int32_t swpathl(const int8_t*, int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                int32_t ld_pen, PathStore& out_store, MoveFlags& out_flags, const ScoreMatrix& matrix,
                const Params* p) {
  UTvector<int32_t> storage;
  const LinearScheme scheme = {
      penalties(table, matrix, p->GAP_CHARACTER, p->MODE == 210, ld_pen, qlen, storage)};
  return find_paths(scheme, qlen, target, dlen, table, p->MIN_SCORE, out_store, out_flags);
}

int32_t swpathli(const int8_t*, int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table,
                 int32_t ld_pen, int32_t li_pen, PathStore& out_store, MoveFlags& out_flags,
                 const ScoreMatrix& matrix, const Params* p) {
  UTvector<int32_t> extend_storage, open_storage;
  const bool from_table = p->MODE == 212;
  const FlaggedScheme scheme = {
      penalties(table, matrix, p->GAP_CHARACTER, from_table, ld_pen, qlen, extend_storage),
      penalties(table, matrix, p->IGAP_CHARACTER, from_table, li_pen, qlen, open_storage)};
  return find_paths(scheme, qlen, target, dlen, table, p->MIN_SCORE, out_store, out_flags);
}

UTvector<PathRec> align_pair(const int8_t* query, int32_t qlen, const int8_t* target, int32_t dlen,
                             const LookupTable& table, MoveFlags& out_flags, const ScoreMatrix& matrix,
                             const Params* p) {
  PathStore store;
  fit_flags(out_flags, dlen, qlen);
  switch (p->MODE) {
    case 200:
    case 210:
      swpathl(query, qlen, target, dlen, table, p->LD_PEN, store, out_flags, matrix, p);
      break;
    case 202:
    case 212:
      swpathli(query, qlen, target, dlen, table, p->LD_PEN, p->LI_PEN, store, out_flags, matrix, p);
      break;
    default:
      break;
  }
  return dosort(store);
}

int32_t present(const PathRec& record, UTvector<PathRec>& slot) {
  for (PathRec& kept : slot) {
    if (kept.start_j != record.start_j) continue;
    if (record.best > kept.best) kept = record;
    return 1;
  }
  return 0;
}

void addsco(const PathRec& record, PathStore& store) {
  store.slots[static_cast<std::size_t>(record.start_i)].push_back(record);
  ++store.total;
}

UTvector<PathRec> dosort(PathStore& store) {
  UTvector<PathRec> paths;
  paths.reserve(static_cast<std::size_t>(store.total));
  for (const UTvector<PathRec>& slot : store.slots) paths.insert(paths.end(), slot.begin(), slot.end());
  store.slots = {};
  if (paths.size() != static_cast<std::size_t>(store.total)) error("k != total in dosort", 1);
  hsort(paths);
  return paths;
}

void aliseq(const int8_t* query, const int8_t* target, const PathRec& path, const MoveFlags& flags,
            AlignedRows& out_rows, const ScoreMatrix& matrix, const Params* p) {
  trace<LinearScheme>(query, target, path, flags, out_rows, residue_code(matrix, p->GAP_CHARACTER));
}

void ialiseq(const int8_t* query, const int8_t* target, const PathRec& path, const MoveFlags& flags,
             AlignedRows& out_rows, const ScoreMatrix& matrix, const Params* p) {
  trace<FlaggedScheme>(query, target, path, flags, out_rows, residue_code(matrix, p->GAP_CHARACTER));
}

void trace_path(const int8_t* query, const int8_t* target, const PathRec& path, const MoveFlags& flags,
                AlignedRows& out_rows, const ScoreMatrix& matrix, const Params* p) {
  if (p->MODE == 0 || p->MODE == 200 || p->MODE == 210) {
    aliseq(query, target, path, flags, out_rows, matrix, p);
  } else {
    ialiseq(query, target, path, flags, out_rows, matrix, p);
  }
}

void reval(int8_t* buffer, int32_t first, int32_t last) {
  std::reverse(buffer + first, buffer + last + 1);
}
