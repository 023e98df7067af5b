#include "align/trace/traced_hits.h"

#include <utility>

namespace zelvan {
namespace {

void trace_hit(TracedHit& hit, const SeqRec& query, const SeqRec& target, const LookupTable& table,
               MoveFlags& flags, const ScoreMatrix& matrix, const Params* p) {
  hit.aligned = true;
  hit.threshold = p->MIN_SCORE;
  hit.paths.clear();
  for (const PathRec& path :
       align_pair(query.seq, query.len, target.seq, target.len, table, flags, matrix, p)) {
    hit.paths.push_back({path, {}});
    trace_path(query.seq, target.seq, path, flags, hit.paths.back().rows, matrix, p);
  }
}

std::size_t size_of(const TracedHit& hit) {
  std::size_t bytes = sizeof hit;
  for (const TracedPath& traced : hit.paths) {
    bytes += sizeof traced + traced.rows.query.capacity() + traced.rows.target.capacity();
  }
  return bytes;
}

}  // namespace

const UTvector<TracedPath>& traced_paths(TracedHits& hits, int32_t rank, const SeqRec& query,
                                         const SeqRec& target, const LookupTable& table,
                                         const ScoreMatrix& matrix, const Params* p) {
  const auto at = static_cast<std::size_t>(rank);
  if (at < hits.kept.size() && hits.kept[at].aligned && hits.kept[at].threshold == p->MIN_SCORE) {
    return hits.kept[at].paths;
  }
  trace_hit(hits.latest, query, target, table, hits.flags, matrix, p);
  if (rank >= hits.wanted || hits.kept_bytes > MOST_KEPT_BYTES) return hits.latest.paths;
  if (hits.kept.size() <= at) hits.kept.resize(at + 1);
  hits.kept_bytes += size_of(hits.latest);
  hits.kept[at] = std::move(hits.latest);
  return hits.kept[at].paths;
}

}  // namespace zelvan
