// The hits of one iteration, aligned and traced once for the printed alignments and for the profile.
#pragma once

#include <cstddef>
#include <cstdint>

#include "align/lookup.h"
#include "align/trace/path_trace.h"
#include "align/trace/traceback.h"
#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

struct TracedPath {
  PathRec path;
  AlignedRows rows;
};

struct TracedHit {
  bool aligned = false;
  int32_t threshold = 0;       // the MIN_SCORE that it was aligned with
  UTvector<TracedPath> paths;  // highest best first
};

// One query, table and ranking; emptied by making it anew.
struct TracedHits {
  int32_t wanted = 0;        // ranks below this are asked for again and therefore kept
  UTvector<TracedHit> kept;  // [rank]
  std::size_t kept_bytes = 0;
  TracedHit latest;  // one that is not kept
  MoveFlags flags;   // the storage of one pair, for the next
};

// Rows kept for one iteration; hits beyond are aligned again when they are asked for again.
constexpr std::size_t MOST_KEPT_BYTES = std::size_t{256} << 20;

// traced_paths - align_pair and trace_path for one hit with p->MIN_SCORE, or what an earlier call with the same
// rank and MIN_SCORE gave.
// In     rank: 0 for the best hit; query, target: encoded
// Returns all paths of the hit; they stay until the next call
// Ends   as trace_path
const UTvector<TracedPath>& traced_paths(TracedHits& hits, int32_t rank, const SeqRec& query,
                                         const SeqRec& target, const LookupTable& table,
                                         const ScoreMatrix& matrix, const Params* p);

}  // namespace zelvan
