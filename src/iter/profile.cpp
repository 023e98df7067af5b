#include "iter/profile.h"

#include <algorithm>

#include "driver/progress.h"
#include "iter/profile_counts.h"
#include "iter/profile_log_odds.h"
#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

// Lays one traced path out in query coordinates: a row of the alignment and its part of the counts. Residues
// opposite a gap of the query leave no trace. With negative penalties a trace can begin before the path does:
// what then does not fit the query is left out.
void add_row(const SeqRec& hit, const PathRec& path, const AlignedRows& traced, double significance,
             int8_t gap, LookupTable& count, AlignData& aldat) {
  AlignRow& row = addseq_to_aldat(aldat, hit, gap);
  row.qstart = path.start_i;
  row.qend = path.end_i;
  row.start = path.start_j;
  row.end = path.end_j;
  row.significance = significance;
  int32_t k = path.start_i;
  const int32_t last = aldat.query->len - 2;
  for (int32_t column = 0; column < traced.length && k <= last; ++column) {
    const auto at = static_cast<std::size_t>(column);
    if (traced.query[at] == gap) continue;
    const int8_t code = traced.target[at];
    ++count[code][k];
    row.aligned[static_cast<std::size_t>(k)] = code;
    ++k;
  }
}

// Takes the significant paths of one hit that are long enough.
void profal2(const SeqRec& query, const SeqRec& hit, const ScoreMatrix& matrix,
             const UTvector<TracedPath>& paths, LookupTable& count, const LpfitData& lpfit, AlignData& aldat,
             const Params* p) {
  const int8_t gap = residue_code(matrix, p->GAP_CHARACTER);
  for (const auto& [path, rows] : paths) {
    if (rows.length < p->MIN_LEN) continue;
    const double significance = get_single_lpfit_prob(path.best, query.len - 2, hit.len - 2, lpfit, p);
    if (static_cast<double>(p->PROBCUT2) >= significance) {
      add_row(hit, path, rows, significance, gap, count, aldat);
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

  LookupTable count = simple_look(query.len, matrix);
  for (int32_t i = nhits - 1; i >= first; --i) {
    const SeqRec& hit = seqs[order[i]];
    if (p->TOP_ONLY == 1) p->MIN_SCORE = scores[order[i]] - matrix.maxval;
    if (p->MODE != 200 && p->MODE != 202 && p->MODE != 210 && p->MODE != 212) refuse_mode();
    profal2(query, hit, matrix, traced_paths(traced, nhits - 1 - i, query, hit, table, matrix, p), count,
            lpfit, aldat, p);
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
