#include "align/trace/traced_hits.h"

#include <utility>

namespace zelvan {
namespace {

// Lays the traced rows out in query coordinates. Residues opposite a gap of the query leave no trace. With
// negative penalties a trace can begin before the path does: what then does not fit the query is left out.
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

int32_t path_threshold(const RankedScan& scan, int32_t rank, int32_t chosen, bool lowered, const Params* p) {
  const ResultRec& results = scan.results;
  if (p->TOP_ONLY == 1) return results.scores[hit_at_rank(results, rank)] - scan.matrix.maxval;
  int32_t threshold = p->MIN_ASCORE;
  if (rank > 0 || !lowered) return threshold;
  for (int32_t k = 0; k < chosen; ++k)
    threshold = std::min(threshold, results.scores[hit_at_rank(results, k)]);
  return threshold;
}

UTvector<PathRec> align_hit(TracedHits& hits, const RankedScan& scan, int32_t rank, int32_t threshold,
                            Params* p) {
  hits.latest = {};
  hits.latest.rank = rank;
  hits.latest.threshold = threshold;
  const SeqRec& target = scan.results.seqs[hit_at_rank(scan.results, rank)];
  return align_pair(scan.query, target, scan.table, threshold, hits.flags, scan.matrix, p);
}

bool trace_hit_path(TracedHits& hits, const RankedScan& scan, const PathRec& path, double& out_significance,
                    const Params* p) {
  const SeqRec& target = scan.results.seqs[hit_at_rank(scan.results, hits.latest.rank)];
  trace_path(scan.query.seq, target.seq, path, hits.flags, hits.rows, scan.matrix, p);
  if (hits.rows.length < p->MIN_LEN) return false;
  out_significance = get_single_lpfit_prob(path.best, residues(scan.query), residues(target), scan.lpfit, p);
  if (static_cast<double>(p->PROBCUT2) >= out_significance) {
    take_path(hits.latest, path, out_significance, hits.rows, scan.query.len,
              residue_code(scan.matrix, p->GAP_CHARACTER));
  }
  return true;
}

void keep_hit(TracedHits& hits) {
  hits.latest.traced = true;
  if (hits.latest.rank >= hits.wanted || hits.kept_bytes > MOST_KEPT_BYTES) return;
  const auto at = static_cast<std::size_t>(hits.latest.rank);
  if (hits.kept.size() <= at) hits.kept.resize(at + 1);
  hits.kept_bytes += size_of(hits.latest);
  hits.kept[at] = std::move(hits.latest);
}

const TracedHit& profile_hit(TracedHits& hits, const RankedScan& scan, int32_t rank, int32_t threshold,
                             Params* p) {
  const auto at = static_cast<std::size_t>(rank);
  if (at < hits.kept.size() && hits.kept[at].traced && hits.kept[at].threshold == threshold) {
    return hits.kept[at];
  }
  double significance = 0;
  for (const PathRec& path : align_hit(hits, scan, rank, threshold, p)) {
    trace_hit_path(hits, scan, path, significance, p);
  }
  return hits.latest;
}

void forget_hits(TracedHits& hits) {
  hits.kept = UTvector<TracedHit>();
  hits.kept_bytes = 0;
  hits.latest = {};
  ucharfree(hits.flags);
}

}  // namespace zelvan
