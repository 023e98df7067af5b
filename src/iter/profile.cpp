#include "iter/profile.h"

#include <algorithm>

#include "driver/progress.h"
#include "driver/search_mode.h"
#include "iter/profile_counts.h"
#include "iter/profile_log_odds.h"
#include "iter/profile_tables.h"
#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

// The paths of one hit as rows of the alignment, and their part of the counts.
void profal2(const SeqRec& seq, const TracedHit& hit, int8_t gap, LookupTable& count, AlignData& aldat) {
  for (const auto& [path, significance, first, length] : hit.paths) {
    AlignRow& row = addseq_to_aldat(aldat, seq, gap);
    row.qstart = path.start_i;
    row.qend = path.end_i;
    row.start = path.start_j;
    row.end = path.end_j;
    row.significance = significance;
    std::copy_n(hit.codes.data() + first, length, row.aligned.data() + path.start_i);
    for (int32_t k = path.start_i; k < path.start_i + length; ++k) {
      ++count[row.aligned[static_cast<std::size_t>(k)]][k];
    }
  }
}

[[noreturn]] void refuse_mode() {
  UTerror("Unrecognised mode in build_profile\n");
  UTend_input(std_err, "%s", "");
}

}  // namespace

void build_profile(const RankedScan& scan, int32_t nsel, TracedHits& traced, LookupTable& table,
                   AlignData& aldat, Params* p) {
  const SeqRec& query = scan.query;
  const ScoreMatrix& matrix = scan.matrix;
  const int32_t chosen = std::min(nsel, scan.results.n);
  const int8_t gap = residue_code(matrix, p->GAP_CHARACTER);
  LookupTable count = simple_look(query.len, matrix);
  for (int32_t rank = 0; rank < chosen; ++rank) {
    if (decode_mode(p->MODE).comparison != Comparison::PROTEINS) refuse_mode();
    const int32_t threshold = path_threshold(scan, rank, chosen, true, p);
    profal2(scan.results.seqs[hit_at_rank(scan.results, rank)], profile_hit(traced, scan, rank, threshold, p),
            gap, count, aldat);
  }
  if (p->PRINT_FRQ_TABS == 1) print_frequency_table(query.len, count, matrix, p);

  progress("About to call calc_profile\n", p);
  if (p->PROFILE_WEIGHT_METHOD == 0) {
    calc_profile(query.seq, query.len, matrix, table, count, p);
  } else if (p->PROFILE_WEIGHT_METHOD == 1 || p->PROFILE_WEIGHT_METHOD == 2) {
    calc_profile2(matrix, table, aldat, p);
  }
  if (p->PRINT_PROFILES == 1) print_profile(query.len, table, matrix, p);
}

}  // namespace zelvan
