#include "iter/iter_driver.h"

#include <algorithm>

#include "align/alignment_text.h"
#include "align/scan/scan.h"
#include "align/trace/traced_hits.h"
#include "driver/gap_defaults.h"
#include "driver/search/search.h"
#include "driver/search_mode.h"
#include "iter/fit_failure.h"
#include "iter/profile.h"
#include "report/iteration_changes.h"
#include "report/multiple_alignment.h"
#include "report/result_sort.h"
#include "report/score_list.h"
#include "seq/alphabet.h"
#include "seq/composition.h"
#include "stats/lpfit.h"
#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

void set_up(Search& search, Params* p) {
  require_precision(p);
  UT_init_times();
  if (p->DO_STATS != 2) {
    std::fputs("Error:  for iterative searching you must set do_stats = 2\n", std_err);
  }
  setgapdefs(p);
  progress("Getting matrix\n", p);
  search.matrix = getmat(p);
  progress("Getting query\n", p);
  read_query(search, p);
  const SeqRec& query = search.query;
  seqtoi(query.seq, query.len, *search.matrix);
  if (p->VERBOSE != 0) {
    std::fprintf(std_err, "Building lookup table (pen = %d, pen1 = %d)\n", p->LD_PEN, p->LI_PEN);
  }
  search.table = mlookgap(query.seq, query.len, *search.matrix, p->LD_PEN, p->LI_PEN, p);
  search.times[TIME_SETUP] = UT_get_times(1);
  show_time("Read matrix, query and build lookup table ", p);
}

void prepare_database(Search& search, Params* p) {
  const Database& database = search.database;
  load_phase(search, [&] {
    read_database(search, p);
    show_time("Load database ", p);
    encode_database(search, p);
    add_database_frequencies(database, p);
    if (p->VERBOSE != 0) DumpDBFreqs(std_err, p);
  });
  if (p->VERBOSE != 0) std::fprintf(std_err, "Scanning database of %d sequences\n", database.n);
  show_time("", p);

  p->DB_QUERY_RATIO = static_cast<double>(p->binfo->nres) / static_cast<double>(residues(search.query));
  if (p->VERBOSE > 10) {
    std::fprintf(stderr, "Penalties: pen = %d pen1 = %d\n", p->LD_PEN, p->LI_PEN);
    std::fputs("Lookup table for first search\n", stderr);
    PrintLookup2(search.query.len, search.table, *search.matrix, stderr, p);
  }
}

// The fragment file is deliberately written only beside the block file.
void open_side_files(Params* p) {
  if (p->PRINT_BLOCK_FILE != 1) return;
  UTfileopen(p->BLOCK_FILE_OUT, "w", 1);
  if (p->PRINT_FRAG_FILE == 1) UTfileopen(p->FRAG_FILE_OUT, "w", 1);
}

void close_side_files(Params* p) {
  if (p->PRINT_BLOCK_FILE != 1) return;
  UTfilewritten(p->BLOCK_FILE_OUT);
  UTfileclose(p->BLOCK_FILE_OUT, 1);
  UTfilewritten(p->FRAG_FILE_OUT);  // stays open to the end of the run
}

void scan(Search& search, const Params* p) {
  const auto scan_all = [&] {
    scan_database(search.query.len, scan_targets(search.database), search.table, *search.matrix,
                  search.scores.data(), p);
  };
  scan_phase(search, "Scan database", scan_all, p);
}

LpfitData fit_statistics(const Search& search, const Params* p) {
  progress("About to call setup_lpfit\n", p);
  LpfitData lpfit =
      setup_lpfit(residues(search.query), search.database.seqs, search.scores.data(), search.database.n, p);
  progress("About to call do_lpfit\n", p);
  if (const int32_t code = do_lpfit(lpfit); code > 0) {
    UTend_input(std_err, "Failure in fitting routines - exiting with Error: %d\n%s\n", code,
                fit_remedy(code, residues(search.query), search.database.seqs, search.database.n));
  }
  return lpfit;
}

// The hits, from the best one on, that lists, alignments and files may ask for.
int32_t ranks_wanted(const UTvector<double>& key, const UTvector<double>& significance, const Params* p) {
  const auto n = static_cast<int32_t>(key.size());
  if (p->VERBOSE == 1002) return n;
  const float cutoff = std::max(p->PROBCUT, p->PROBCUT2);
  const int32_t listed = ranks_within(cutoff, key.data(), significance.data(), n);
  return std::min(n, std::max({listed, p->MAX_AOUT, p->EXTRACT_SEQ}));
}

void trace_ranking(const ResultRec& results) {
  for (int32_t rank = 0; rank < results.n; ++rank) {
    const int32_t k = hit_at_rank(results, rank);
    std::fprintf(std_out, "After cpv: %s %d %d %d %g %g\n", results.seqs[k].id, rank, k, results.scores[k],
                 results.standardised[k], results.significance[k]);
  }
}

void build_next_profile(const RankedScan& ranked, LookupTable& table, TracedHits& traced, Params* p) {
  const auto announce = [&](const char* format) {
    if (p->VERBOSE != 0) std::fprintf(std_err, format, p->ITERATION);
  };
  announce("About to call initialise_aldat: Iteration %d\n");
  AlignData aldat = initialise_aldat(ranked.query);
  announce("About to call build_profile: Iteration %d\n");
  build_profile(ranked, p->n_probcut2_hits, traced, table, aldat, p);
  announce("About to call print_multiple_alignment Iteration %d\n");
  print_multiple_alignment(aldat, p);
  announce("About to call print_frag_file Iteration %d\n");
  print_frag_file(aldat, p);
  announce("About to call destroy_aldat: Iteration %d\n");
  destroy_aldat(aldat);
  announce("Done with  build_profile: Iteration %d\n");
}

// One pass over the database and all that follows from it. Returns the number of changes of the hit list.
int32_t iterate(Search& search, IterHistory& history, TracedHits& traced, int32_t iteration, Params* p) {
  search.order = UTvector<int32_t>();
  scan(search, p);
  if (p->NPRINT_TO_THRESHOLD == 1) p->MAX_NOUT = search.database.n;
  LpfitData lpfit = fit_statistics(search, p);
  p->lpfit = &lpfit;  // cppcheck-suppress autoVariables ; taken back at the end

  progress("About to call apply_lpfit\n", p);
  const UTvector<double> standardised = apply_lpfit(lpfit);
  release_hits(lpfit);
  const UTvector<double> significance =
      get_lpfit_probs(standardised, search.database.seqs, search.database.n, p);
  const bool by_significance = p->PROB_TYPE == 2;
  const int32_t ranks = by_significance ? search.database.n : ranks_wanted(standardised, significance, p);
  search.order =
      do_pv_sort(by_significance ? significance.data() : standardised.data(), search.database.n, ranks, p);
  ResultRec results;
  results.seqs = search.database.seqs;
  results.scores = search.scores.data();
  results.standardised = standardised.data();
  results.significance = significance.data();
  results.order = search.order.data();
  results.n = search.database.n;
  if (p->DO_SORT == 1) results.unranked = results.n - ranks;
  if (p->VERBOSE == 1002) trace_ranking(results);

  progress("About to call print_score_list3\n", p);
  p->ITERATION = iteration;
  const int32_t totn = print_score_list3(search.query, results, *search.matrix, search.times, p);
  if (p->VERBOSE != 0) std::fprintf(std_err, "totn: %d\n", totn);
  progress("About to call iter_hist\n", p);
  iter_hist(history, results, iteration, p->n_probcut2_hits, p);
  progress("About to print_changes\n", p);
  const int32_t changes = print_changes(history, search.database.seqs, iteration, std_out, p);

  if (p->VERBOSE != 0) {
    std::fprintf(std_err, "PROBCUT: %f MAX_AOUT: %d\n", static_cast<double>(p->PROBCUT), p->MAX_AOUT);
  }
  if (p->APRINT_TO_THRESHOLD == 1) p->MAX_AOUT = totn;
  if (p->VERBOSE != 0) {
    std::fprintf(std_err, "About to call print_alignments_pp\ntotn: %d\np->MAX_AOUT: %d\n", totn,
                 p->MAX_AOUT);
  }
  traced.wanted = p->n_probcut2_hits;
  const RankedScan ranked = {search.query, *search.matrix, search.table, lpfit, results};
  lend_hits(search.database, search.order, std::max(p->MAX_AOUT, p->n_probcut2_hits));
  print_alignments_pp(ranked, traced, p);
  build_next_profile(ranked, search.table, traced, p);
  forget_hits(traced);
  p->lpfit = nullptr;
  return changes;
}

void search_until_stable(Search& search, Params* p) {
  IterHistory history;
  TracedHits traced;
  int32_t changes = -1;
  for (int32_t i = 0; i < p->NITER && changes != 0; ++i) {
    changes = iterate(search, history, traced, i, p);
    if (changes == 0) {
      std::fputs("#\n# Have converged - skipping any remaining iterations.\n#\n", std_out);
    }
    if (i == 0 && p->MODE == AFFINE_MODE && p->MIXED_MODE == 1) {
      p->MODE = LINEAR_MODE;
      p->LD_PEN = p->MM_LD_PEN;
    }
  }
}

}  // namespace

void swpp2_iter(Params* p) {
  Search search;
  set_up(search, p);
  prepare_database(search, p);
  open_side_files(p);
  search_until_stable(search, p);
  close_side_files(p);
  finish_search(search, p);
}

}  // namespace zelvan
