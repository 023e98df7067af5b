#include "align/trace/traceback.h"

#include <utility>

#include "align/trace/path_search.h"
#include "driver/search_mode.h"

namespace zelvan {
namespace {

int32_t align(int32_t qlen, const int8_t* target, int32_t dlen, const LookupTable& table, const GapRows& gaps,
              const PathScheme& scheme, int32_t threshold, PathStore& store, MoveFlags& flags) {
  empty_store(store, qlen);
  const FlagSweep sweep =
      fill_flags(qlen, target, dlen, table, gaps, threshold, best_instruction_set(), flags);
  const FlaggedPair pair = {qlen, dlen, target, table, gaps, scheme, flags, threshold};
  // Below half of the best, most of what a path leaves behind it is as high.
  if (threshold > sweep.best / 2 && !any_negative(gaps, qlen)) {
    find_high_paths(pair, sweep, store);
  } else if (sweep.best >= 0) {
    find_all_paths(pair, store);
  }
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
