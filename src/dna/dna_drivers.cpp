#include "dna/dna_drivers.h"

#include <algorithm>
#include <cstdio>

#include "dna/frame_scan.h"
#include "dna/frame_shift_text.h"
#include "driver/gap_defaults.h"
#include "driver/search/search.h"
#include "driver/search_mode.h"
#include "report/result_sort.h"
#include "report/score_list.h"
#include "seq/alphabet.h"
#include "seq/codon.h"
#include "seq/residue_kind.h"
#include "seq/sequence_file.h"
#include "stats/zscore_log.h"
#include "stats/zscore_stats.h"
#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

// What one run works on.
struct TranslatedSearch {
  Search search;  // a DNA query is translated before it is encoded
  CodonTable codons;
  UTvector<int8_t> dna;  // the letters of a DNA query, else empty
};

bool query_is_dna(const Params* p) {
  return decode_mode(p->MODE).comparison == Comparison::TRANSLATED_QUERY;
}

void set_up(TranslatedSearch& translated, const char* matrix_message, Params* p) {
  Search& search = translated.search;
  progress("Getting codon table\n", p);
  translated.codons = getcodon(p);
  progress(matrix_message, p);
  search.matrix = getmat(p);
  read_query(search, p);
  SeqRec& query = search.query;
  if (query_is_dna(p)) setup_dnaseq(translated.dna, query, translated.codons, p->COMPLEMENT_QUERY);
  seqtoi(query.seq, query.len, *search.matrix);
  progress("Building lookup table\n", p);
  search.table = mlook(query.seq, query.len, *search.matrix);
}

// ---- Mode 10: the database passes by in batches and is never held as a whole.

constexpr int64_t BATCH_BASES = int64_t{1} << 22;

struct Batch {
  SeqStore store;
  UTvector<SeqRec> seqs;
  int32_t longest = 0;  // of all batches so far, stored length: scores against it fit 32 bits
};

// The last two positions of a sequence, which begin no whole codon, are no rows here.
void score_batch(const Batch& batch, const Search& search, const Params* p) {
  constexpr int32_t DIVISOR = 100;  // whatever PRECISION is
  UTvector<SeqRec> rows = batch.seqs;
  for (SeqRec& row : rows) row.len -= 2;
  UTvector<int32_t> scores(rows.size());
  scan_frames(search.query.len, {rows.data(), static_cast<int32_t>(rows.size())}, search.table, scores.data(),
              p);
  for (std::size_t k = 0; k < scores.size(); ++k) {
    std::fprintf(std_out, "%d %s\n", scores[k] / DIVISOR, rows[k].id);
  }
}

// Translates and encodes a record. Where that cannot be done, the run ends behind the lines of those before
// it.
void append_translated(Batch& batch, SeqRec record, const TranslatedSearch& translated, const Params* p) {
  const Search& search = translated.search;
  if (const int32_t at = translate_dna(record, translated.codons); at != 0) {
    score_batch(batch, search, p);
    end_untranslated(record, at, "Something weird happened when translating (swipd)");
  }
  if (record.len > batch.longest) {
    batch.longest = record.len;
    if (!scores_fit(search.table, *search.matrix, batch.longest, p)) {
      score_batch(batch, search, p);
      check_score_range(search.table, *search.matrix, &record, 1, p);
    }
  }
  seqtoi(record.seq, record.len, *search.matrix);
  batch.seqs.push_back(record);
}

// Returns false at the end of the database, or of what can be read of it.
bool read_batch(Batch& batch, SeqReader& reader, const TranslatedSearch& translated, const Params* p) {
  batch.seqs.clear();
  freeseqs(batch.store);
  SeqRec record;
  for (int64_t bases = 0; bases < BATCH_BASES; bases += record.len) {
    if (!get_db_seq(reader, batch.store, record, p)) return false;
    if (batch.longest == 0) warn_of_database(&record, 1, p);
    append_translated(batch, record, translated, p);
  }
  return true;
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

// Translates and encodes the database.
void translate_database(Search& search, const CodonTable& codons, const Params* p) {
  if (stored_as_codes(p)) {
    UTend_input(std_err, "For DNA, the binary database must not be built with APPLY_INDEX\nSorry...\n");
  }
  const auto translate =
      [&codons, flag = p->COMPLEMENT_QUERY, letters = UTvector<int8_t>()](
          SeqRec& record) mutable {  // letters of one sequence at a time: nothing prints them
        setup_dnaseq(letters, record, codons, flag);
      };
  const Database& database = search.database;
  if (database.volumes.volumes.empty()) std::for_each(database.seqs, database.seqs + database.n, translate);
  encode_database(search, p, translate);
}

void prepare_database(TranslatedSearch& translated, Params* p) {
  Search& search = translated.search;
  load_phase(search, [&] {
    read_database(search, p);
    if (query_is_dna(p)) {
      encode_database(search, p);
    } else {
      translate_database(search, translated.codons, p);
    }
    if (search.database.n < p->MIN_NSTATS) p->DO_STATS = 0;
  });
}

void scan(Search& search, const Params* p) {
  const Database& database = search.database;
  if (p->VERBOSE != 0) std::fprintf(std_err, "Scanning database of %d sequences\n", database.n);
  const auto scan_all = [&] {
    scan_frames(search.query.len, scan_targets(database), search.table, search.scores.data(), p);
  };
  scan_phase(search, "Scan database  ", scan_all, p);
}

// The best hits by significance, or by score where there are no statistics, which leave the list unranked.
void print_alignments(TranslatedSearch& translated, ResultRec results, const Params* p) {
  Search& search = translated.search;
  UTvector<int32_t> by_score;
  if (results.significance == nullptr) {
    by_score = do_zs_sort(results.scores, results.n, p->MAX_AOUT, p);
    results.order = by_score.data();
  }
  lend_hits(search.database, results.significance == nullptr ? by_score : search.order, p->MAX_AOUT);
  print_frame_alignments(search.query, translated.dna, results, *search.matrix, search.table, p);
}

void report(TranslatedSearch& translated, Params* p) {
  Search& search = translated.search;
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
    if (p->DUMP_STATS == 1) dump_stats(stats, zscores.data(), search.query, p);
    significance = (p->FIT_TYPE == 1 ? get_p : get_e)(zscores.data(), results.n, p);
    const int32_t listed = ranks_within(p->PROBCUT, zscores.data(), significance.data(), results.n);
    const int32_t ranks = std::min(results.n, std::max({listed, p->MAX_AOUT, p->EXTRACT_SEQ}));
    search.order = do_zs_sort(zscores.data(), results.n, ranks, p);
    if (p->DO_SORT == 1) results.unranked = results.n - ranks;
    results.order = search.order.data();
    results.zscores = zscores.data();
    results.significance = significance.data();
    const int32_t lines =
        print_score_list2(search.query, results, *search.matrix, &stats.line, search.times, p);
    if (p->APRINT_TO_THRESHOLD == 1) p->MAX_AOUT = lines;
  } else {
    print_score_list(search.query, results, *search.matrix, search.times, p);
  }
  if (query_is_dna(p)) print_alignments(translated, results, p);
}

void search_translated(Params* p) {
  check_settings(p);
  UT_init_times();
  setgapdefs(p);
  TranslatedSearch translated;
  Search& search = translated.search;
  set_up(translated, "Getting matrix\n", p);
  search.times[TIME_SETUP] = UT_get_times(1);
  prepare_database(translated, p);
  scan(search, p);
  report(translated, p);
  finish_search(search, p);
}

}  // namespace

void swipd(Params* p) {
  if (p->TIME == 1) UT_init_times();
  TranslatedSearch translated;
  set_up(translated, "Getting pairscore matrix\n", p);
  progress("Opening database\n", p);
  SeqReader reader = open_text_database(p);
  progress("Scanning\n", p);
  if (p->VERBOSE != 0) {
    std::fprintf(std_err, "Penalties: ld_pen: %d li_pen: %d fs_pen %d\n", p->LD_PEN, p->LI_PEN, p->FS_PEN);
  }
  const Search& search = translated.search;
  Batch batch;
  reader.before_end = [&] { score_batch(batch, search, p); };
  for (bool more = true; more;) {
    more = read_batch(batch, reader, translated, p);
    score_batch(batch, search, p);
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
