#include "align/trace/traced_hits.h"

#include <utility>

namespace zelvan {
namespace {

// Lays the traced rows out in query coordinates. Residues opposite a gap of the query leave no trace. With negative
// penalties a trace can begin before the path does: what then does not fit the query is left out.
void take_path(TracedHit& hit, const PathRec& path, double significance, const AlignedRows& rows,
               int32_t qlen, int8_t gap) {
  ProfilePath taken = {path, significance, hit.codes.size(), 0};
  const int32_t most = qlen - 1 - path.start_i;
  for (std::size_t column = 0; column < static_cast<std::size_t>(rows.length) && taken.length < most;
       ++column) {
    if (rows.query[column] == gap) continue;
    hit.codes.push_back(rows.target[column]);
    ++taken.length;
  }
  hit.paths.push_back(taken);
}

std::size_t size_of(const TracedHit& hit) {
  return sizeof hit + hit.paths.capacity() * sizeof(ProfilePath) + hit.codes.capacity();
}

}  // namespace

UTvector<PathRec> align_hit(TracedHits& hits, const SeqRec& query, const SeqRec& target,
                            const LookupTable& table, const ScoreMatrix& matrix, const Params* p) {
  hits.latest = {};
  hits.latest.threshold = p->MIN_SCORE;
  return align_pair(query.seq, query.len, target.seq, target.len, table, hits.flags, matrix, p);
}

bool trace_hit_path(TracedHits& hits, const PathRec& path, const SeqRec& query, const SeqRec& target,
                    const ScoreMatrix& matrix, const LpfitData& lpfit, double& out_significance,
                    const Params* p) {
  trace_path(query.seq, target.seq, path, hits.flags, hits.rows, matrix, p);
  if (hits.rows.length < p->MIN_LEN) return false;
  out_significance = get_single_lpfit_prob(path.best, query.len - 2, target.len - 2, lpfit, p);
  if (static_cast<double>(p->PROBCUT2) >= out_significance) {
    take_path(hits.latest, path, out_significance, hits.rows, query.len,
              residue_code(matrix, p->GAP_CHARACTER));
  }
  return true;
}

void keep_hit(TracedHits& hits, int32_t rank) {
  hits.latest.traced = true;
  if (rank >= hits.wanted || hits.kept_bytes > MOST_KEPT_BYTES) return;
  const auto at = static_cast<std::size_t>(rank);
  if (hits.kept.size() <= at) hits.kept.resize(at + 1);
  hits.kept_bytes += size_of(hits.latest);
  hits.kept[at] = std::move(hits.latest);
}

const TracedHit& profile_hit(TracedHits& hits, int32_t rank, const SeqRec& query, const SeqRec& target,
                             const LookupTable& table, const ScoreMatrix& matrix, const LpfitData& lpfit,
                             const Params* p) {
  const auto at = static_cast<std::size_t>(rank);
  if (at < hits.kept.size() && hits.kept[at].traced && hits.kept[at].threshold == p->MIN_SCORE) {
    return hits.kept[at];
  }
  double significance = 0;
  for (const PathRec& path : align_hit(hits, query, target, table, matrix, p)) {
    trace_hit_path(hits, path, query, target, matrix, lpfit, significance, p);
  }
  return hits.latest;
}

}  // namespace zelvan
