// The hits of one iteration, aligned and traced once for the printed alignments and for the profile. All
// paths of a hit are found together, in records of a few bytes; they are traced one by one, and only those
// that the profile takes are kept.
#pragma once

#include <cstddef>
#include <cstdint>

#include "align/lookup.h"
#include "align/scan/scan_results.h"
#include "align/trace/path_trace.h"
#include "align/trace/traceback.h"
#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "stats/lpfit.h"
#include "util/memory.h"

namespace zelvan {

// A ranked scan: all that it takes to align its hits again.
struct RankedScan {
  const SeqRec& query;  // encoded
  const ScoreMatrix& matrix;
  const LookupTable& table;  // that the database was scanned with
  const LpfitData& lpfit;    // the statistics of the scan
  ResultRec results;         // sequences encoded; scores and order are read
};

// path_threshold - the least score that a path of a hit is kept with, of the `chosen` best hits.
// Does   TOP_ONLY 1: only paths near the hit's score, so much below it as the matrix gives for one pair.
//        Otherwise MIN_ASCORE; for the best hit, with `lowered`, not above the lowest score of those chosen
// In     rank: 0 for the best hit, below chosen
int32_t path_threshold(const RankedScan& scan, int32_t rank, int32_t chosen, bool lowered, const Params* p);

// A path that the profile takes. The target's codes opposite the query positions from path.start_i on are
// codes[first .. first + length - 1] of its hit.
struct ProfilePath {
  PathRec path;
  double significance = 0;
  std::size_t first = 0;
  int32_t length = 0;
};

struct TracedHit {
  int32_t rank = -1;            // 0 for the best hit
  int32_t threshold = 0;        // that it was aligned with
  bool traced = false;          // to its last path
  UTvector<ProfilePath> paths;  // highest best first
  UTvector<int8_t> codes;
};

// One query, table and ranking; emptied by forget_hits.
struct TracedHits {
  int32_t wanted = 0;        // ranks below this are asked for by the profile and therefore kept
  UTvector<TracedHit> kept;  // [rank]
  std::size_t kept_bytes = 0;
  TracedHit latest;
  MoveFlags flags;   // of the latest; their storage serves the next
  AlignedRows rows;  // of the path traced last
};

// Kept for one iteration; hits beyond are aligned again when the profile asks for them.
constexpr std::size_t MOST_KEPT_BYTES = std::size_t{256} << 20;

// align_hit - align_pair for the hit of a rank, which makes it the latest; nothing is traced yet.
// In     rank: 0 for the best hit; threshold: of path_threshold
// Returns all its paths, highest best first
UTvector<PathRec> align_hit(TracedHits& hits, const RankedScan& scan, int32_t rank, int32_t threshold,
                            Params* p);

// trace_hit_path - trace_path for the next path of the latest hit. The profile takes it when it has at least
// MIN_LEN columns and a significance at or below PROBCUT2.
// Out    hits.rows; out_significance: as get_single_lpfit_prob, unset below MIN_LEN columns
// Returns whether it has at least MIN_LEN columns
// Ends   as trace_path
bool trace_hit_path(TracedHits& hits, const RankedScan& scan, const PathRec& path, double& out_significance,
                    const Params* p);

// keep_hit - keeps the latest hit, traced to its last path, if the profile wants it and there is room.
void keep_hit(TracedHits& hits);

// profile_hit - the hit of a rank with the paths that the profile takes: the one kept with this threshold,
// else aligned and traced.
// Returns a hit that stays until the next call
// Ends   as trace_path
const TracedHit& profile_hit(TracedHits& hits, const RankedScan& scan, int32_t rank, int32_t threshold,
                             Params* p);

// forget_hits - makes ready for another ranking and table.
void forget_hits(TracedHits& hits);

}  // namespace zelvan
