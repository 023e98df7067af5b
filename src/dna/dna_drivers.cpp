#include "dna/dna_drivers.h"

#include <cstdio>

#include "align/lookup.h"
#include "align/score_range.h"
#include "bdb/database.h"
#include "bdb/extraction.h"
#include "dna/frame_scan.h"
#include "dna/frame_shift_text.h"
#include "driver/gap_defaults.h"
#include "driver/progress.h"
#include "report/result_sort.h"
#include "report/score_list.h"
#include "seq/alphabet.h"
#include "seq/codon.h"
#include "seq/matrix.h"
#include "seq/residue_kind.h"
#include "seq/sequence_file.h"
#include "stats/zscore_log.h"
#include "stats/zscore_stats.h"
#include "util/failure.h"
#include "util/streams.h"
#include "util/timing.h"

namespace zelvan {
namespace {

// What every translated search sets up first.
struct Setup {
  CodonTable codons;
  const ScoreMatrix* matrix = nullptr;  // lives for the process
  SeqStore query_store;
  SeqRec query;          // encoded; a DNA query translated before
  UTvector<int8_t> dna;  // the letters of a DNA query, else empty
  LookupTable table;
};

// One search with a ranked result.
struct Search {
  Setup setup;
  Database database;
  UTvector<int32_t> scores;  // [n] x PRECISION
  UTvector<int32_t> order;   // of the score list, best last
  RunTimes times;
};

bool query_is_dna(const Params* p) {
  return p->MODE == 20 || p->MODE == 22;
}

void set_up(Setup& setup, const char* matrix_message, Params* p) {
  progress("Getting codon table\n", p);
  setup.codons = getcodon(p);
  progress(matrix_message, p);
  setup.matrix = getmat(p);
  setup.query = get_query_seq(setup.query_store, p);
  SeqRec& query = setup.query;
  warn_of_query(query, p);
  if (p->VERBOSE != 0) {
    std::fprintf(std_err, "Query:\n%s\n%s\n%s\n", query.id, query.title,
                 reinterpret_cast<const char*>(query.seq + 1));
  }
  if (query_is_dna(p)) setup_dnaseq(setup.dna, query, setup.codons, p->COMPLEMENT_QUERY);
  seqtoi(query.seq, query.len, *setup.matrix);
  progress("Building lookup table\n", p);
  setup.table = mlook(query.seq, query.len, *setup.matrix);
}

// ---- Mode 10: the database passes by in batches and is never held as a whole.

constexpr int64_t BATCH_BASES = int64_t{1} << 22;

struct Batch {
  SeqStore store;
  UTvector<SeqRec> seqs;
  int32_t longest = 0;  // of all batches so far, stored length: scores against it fit 32 bits
};

void score_batch(const Batch& batch, const Setup& setup, const Params* p) {
  constexpr int32_t DIVISOR = 100;  // whatever PRECISION is
  UTvector<int32_t> scores(batch.seqs.size());
  scan_frames(setup.query.len, batch.seqs.data(), static_cast<int32_t>(batch.seqs.size()), setup.table,
              scores.data(), p);
  for (std::size_t k = 0; k < scores.size(); ++k) {
    std::fprintf(std_out, "%d %s\n", scores[k] / DIVISOR, batch.seqs[k].id);
  }
}

// Translates and encodes a record. Where that cannot be done, the run ends behind the lines of those before it.
void append_translated(Batch& batch, SeqRec record, const Setup& setup, const Params* p) {
  if (const int32_t at = translate_dna(record, setup.codons); at != 0) {
    score_batch(batch, setup, p);
    end_untranslated(record, at, "Something weird happened when translating (swipd)");
  }
  if (record.len > batch.longest) {
    batch.longest = record.len;
    if (!scores_fit(setup.table, *setup.matrix, batch.longest, p)) {
      score_batch(batch, setup, p);
      check_score_range(setup.table, *setup.matrix, &record, 1, p);
    }
  }
  seqtoi(record.seq, record.len, *setup.matrix);
  batch.seqs.push_back(record);
}

void read_batch(Batch& batch, SeqReader& reader, const Setup& setup, const Params* p) {
  batch.seqs.clear();
  freeseqs(batch.store);
  SeqRec record;
  for (int64_t bases = 0; bases < BATCH_BASES; bases += record.len) {
    if (!get_db_seq(reader, batch.store, record, p)) break;
    if (batch.longest == 0) warn_of_database(&record, 1, p);  // the first of all
    append_translated(batch, record, setup, p);
  }
}

// ---- Modes 12, 20 and 22.

void check_settings(const Params* p) {
  require_precision(p);
  if (p->MAX_NOUT == -1 && p->MIN_SCORE == -p->PRECISION) {
    UTend_input(std_err, "Error:  Both min_score and max_nout are set to -1\n");
  }
  if (p->DO_STATS == 2) {
    std::fputs("Note:  for a list ranked by significance in this mode you must set do_stats = 1\n", std_err);
  }
}

void translate_database(Search& search, const Params* p) {
  if (stored_as_codes(p)) {
    UTend_input(std_err, "For DNA, the binary database must not be built with APPLY_INDEX\nSorry...\n");
  }
  UTvector<int8_t> letters;  // of one sequence at a time: nothing prints them
  for (int32_t k = 0; k < search.database.n; ++k) {
    setup_dnaseq(letters, search.database.seqs[k], search.setup.codons, p->COMPLEMENT_QUERY);
  }
}

void prepare_database(Search& search, Params* p) {
  Database& database = search.database;
  const Stopwatch before = UT_keep_times();
  load_database(database, *search.setup.matrix, p);
  if (!stored_as_codes(p)) warn_of_database(database.seqs, database.n, p);
  if (!query_is_dna(p)) translate_database(search, p);
  if (database.n < p->MIN_NSTATS) p->DO_STATS = 0;
  if (!stored_as_codes(p)) {
    progress("Converting database sequences\n", p);
    encode_sequences(database.seqs, database.n, *search.setup.matrix);
    show_time("Convert database ", p);
  }
  UT_return_to_times(before);  // the slot covers all of the loading, whatever was shown on the way
  search.times[TIME_LOAD] = UT_get_times(1);
}

void scan(Search& search, const Params* p) {
  const Database& database = search.database;
  if (p->VERBOSE != 0) std::fprintf(std_err, "Scanning database of %d sequences\n", database.n);
  check_score_range(search.setup.table, *search.setup.matrix, database.seqs, database.n, p);
  search.scores.assign(static_cast<std::size_t>(database.n), 0);
  UT_get_times(1);  // a reading that nobody sees: the slot then covers the scan alone, and so the rate
  scan_frames(search.setup.query.len, database.seqs, database.n, search.setup.table, search.scores.data(), p);
  search.times[TIME_SCAN] = UT_get_times(1);
  show_time("Scan database  ", p);
}

// The best hits by significance, or by score where there are no statistics, which leave the list unranked.
void print_alignments(const Search& search, ResultRec results, const Params* p) {
  UTvector<int32_t> by_score;
  if (results.significance == nullptr) {
    by_score = do_zs_sort(results.scores, results.n, p);
    results.order = by_score.data();
  }
  print_frame_alignments(search.setup.query, search.setup.dna, results, *search.setup.matrix,
                         search.setup.table, p);
}

void report(Search& search, Params* p) {
  const Setup& setup = search.setup;
  ResultRec results;
  results.seqs = search.database.seqs;
  results.scores = search.scores.data();
  results.n = search.database.n;
  search.order = do_result_sort(results.n, search.times, p);
  results.order = search.order.data();
  UTvector<int32_t> zscores;
  UTvector<double> significance;
  if (p->DO_STATS == 1) {
    const ZStats stats = do_stats(results.scores, results.seqs, results.n, p);
    zscores = get_zscores(stats, results.scores, results.seqs, results.n, p);
    if (p->DUMP_STATS == 1) dump_stats(stats, zscores.data(), setup.query, p);
    search.order = do_zs_sort(zscores.data(), results.n, p);
    significance = (p->FIT_TYPE == 1 ? get_p : get_e)(zscores.data(), results.n, p);
    results.order = search.order.data();
    results.zscores = zscores.data();
    results.significance = significance.data();
    const int32_t lines =
        print_score_list2(setup.query, results, *setup.matrix, &stats.line, search.times, p);
    if (p->APRINT_TO_THRESHOLD == 1) p->MAX_AOUT = lines;
  } else {
    print_score_list(setup.query, results, *setup.matrix, search.times, p);
  }
  if (query_is_dna(p)) print_alignments(search, results, p);
}

void search_translated(Params* p) {
  check_settings(p);
  UT_init_times();
  setgapdefs(p);
  Search search;
  set_up(search.setup, "Getting matrix\n", p);
  search.times[TIME_SETUP] = UT_get_times(1);
  prepare_database(search, p);
  scan(search, p);
  report(search, p);
  extract_seqs(search.database.seqs, search.database.n, search.order.data(), *search.setup.matrix, p);
  search.times[TIME_ALIGNMENTS] = UT_get_times(1);
  show_time("Write results ", p);
  UT_reset_times();
  if (p->SHOW_BLURB != 0) {
    print_times2(std_out, search.times, search.setup.query.len - 2, p->binfo->nres);
  }
  p->binfo = nullptr;
}

}  // namespace

void swipd(Params* p) {
  if (p->TIME == 1) UT_init_times();
  Setup setup;
  set_up(setup, "Getting pairscore matrix\n", p);
  progress("Opening database\n", p);
  SeqReader reader = open_text_database(p);
  progress("Scanning\n", p);
  if (p->VERBOSE != 0) {
    std::fprintf(std_err, "Penalties: ld_pen: %d li_pen: %d fs_pen %d\n", p->LD_PEN, p->LI_PEN, p->FS_PEN);
  }
  Batch batch;
  reader.before_end = [&] { score_batch(batch, setup, p); };
  for (read_batch(batch, reader, setup, p); !batch.seqs.empty(); read_batch(batch, reader, setup, p)) {
    score_batch(batch, setup, p);
  }
  UTfileclose(p->DB_FILE, 0);
  if (p->TIME == 1) {
    UT_show_times(std_err, 1);
    UT_reset_times();
  }
}

void swaipd2(Params* p) {
  search_translated(p);
}

void swadp(Params* p) {
  search_translated(p);
}

void swaidp2(Params* p) {
  search_translated(p);
}

}  // namespace zelvan
