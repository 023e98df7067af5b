#include "iter/profile.h"

#include <algorithm>

#include "driver/progress.h"
#include "iter/profile_counts.h"
#include "iter/profile_log_odds.h"
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

void build_profile(const SeqRec& query, const SeqRec* seqs, const int32_t* scores, const int32_t* order,
                   int32_t nhits, const ScoreMatrix& matrix, LookupTable& table, const LpfitData& lpfit,
                   int32_t nsel, TracedHits& traced, AlignData& aldat, Params* p) {
  const int32_t saved_min_score = p->MIN_SCORE;
  const int32_t first = std::max(nhits - nsel, 0);
  p->MIN_SCORE = p->MIN_ASCORE;
  for (int32_t i = first; i < nhits; ++i) p->MIN_SCORE = std::min(p->MIN_SCORE, scores[order[i]]);

  const int8_t gap = residue_code(matrix, p->GAP_CHARACTER);
  LookupTable count = simple_look(query.len, matrix);
  for (int32_t i = nhits - 1; i >= first; --i) {
    const SeqRec& hit = seqs[order[i]];
    if (p->TOP_ONLY == 1) p->MIN_SCORE = scores[order[i]] - matrix.maxval;
    if (p->MODE != 200 && p->MODE != 202 && p->MODE != 210 && p->MODE != 212) refuse_mode();
    profal2(hit, profile_hit(traced, nhits - 1 - i, query, hit, table, matrix, lpfit, p), gap, count, aldat);
    p->MIN_SCORE = p->MIN_ASCORE;
  }
  if (p->PRINT_FRQ_TABS == 1) {
    std::fprintf(std_out, "# Frequency table derived from iteration: %d\n", p->ITERATION);
    PrintLookup3(query.len, count, matrix, std_out);
  }

  progress("About to call calc_profile\n", p);
  if (p->PROFILE_WEIGHT_METHOD == 0) {
    calc_profile(query.seq, query.len, matrix, table, count, p);
  } else if (p->PROFILE_WEIGHT_METHOD == 1 || p->PROFILE_WEIGHT_METHOD == 2) {
    calc_profile2(matrix, table, aldat, p);
  }
  if (p->PRINT_PROFILES == 1) {
    std::fprintf(std_out, "#\n# Lookup table (profile) derived from iteration: %d\n", p->ITERATION);
    PrintLookup4(query.len, table, matrix, std_out, p);
  }
  p->MIN_SCORE = saved_min_score;
}

}  // namespace zelvan
