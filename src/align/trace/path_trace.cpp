#include "align/trace/path_trace.h"

#include <algorithm>

#include "driver/search_mode.h"
#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

void trace(const int8_t* query, const int8_t* target, const PathRec& path, const MoveFlags& flags,
           const PathScheme& scheme, int8_t gap, AlignedRows& out_rows) {
  out_rows.query.clear();
  out_rows.target.clear();
  int32_t i = path.end_i;
  int32_t j = path.end_j;
  while (i >= path.start_i || j >= path.start_j) {
    switch (scheme.preferred[flags[j][i] & ALL_MOVES]) {
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

}  // namespace

void aliseq(const int8_t* query, const int8_t* target, const PathRec& path, const MoveFlags& flags,
            AlignedRows& out_rows, const ScoreMatrix& matrix, const Params* p) {
  trace(query, target, path, flags, LINEAR_PATHS, residue_code(matrix, p->GAP_CHARACTER), out_rows);
}

void ialiseq(const int8_t* query, const int8_t* target, const PathRec& path, const MoveFlags& flags,
             AlignedRows& out_rows, const ScoreMatrix& matrix, const Params* p) {
  trace(query, target, path, flags, FLAGGED_PATHS, residue_code(matrix, p->GAP_CHARACTER), out_rows);
}

void trace_path(const int8_t* query, const int8_t* target, const PathRec& path, const MoveFlags& flags,
                AlignedRows& out_rows, const ScoreMatrix& matrix, const Params* p) {
  (decode_mode(p->MODE).affine ? ialiseq : aliseq)(query, target, path, flags, out_rows, matrix, p);
}

void reval(int8_t* buffer, int32_t first, int32_t last) {
  std::reverse(buffer + first, buffer + last + 1);
}

}  // namespace zelvan
