#include "driver/search/search.h"

#include "bdb/extraction.h"
#include "report/run_header.h"
#include "seq/residue_kind.h"
#include "seq/sequence_file.h"
#include "util/streams.h"

namespace zelvan {

void read_query(Search& search, Params* p) {
  search.query = get_query_seq(search.query_store, p);
  const SeqRec& query = search.query;
  warn_of_query(query, p);
  if (p->VERBOSE == 0) return;
  std::fprintf(std_err, "Query:\n%s\n%s\n%s\n", query.id, query.title,
               reinterpret_cast<const char*>(query.seq + 1));
}

void read_database(Search& search, Params* p) {
  load_database(search.database, *search.matrix, p);
  if (!stored_as_codes(p)) warn_of_database(search.database.seqs, search.database.n, p);
}

void encode_database(Search& search, const Params* p, const std::function<void(SeqRec&)>& translate) {
  if (!stored_as_codes(p)) progress("Converting database sequences\n", p);
  encode_database(search.database, *search.matrix, p, translate);
  if (!stored_as_codes(p)) show_time("Convert database ", p);
}

void finish_search(Search& search, Params* p) {
  if (!search.order.empty()) lend_hits(search.database, search.order, p->EXTRACT_SEQ);
  extract_seqs(search.database.seqs, static_cast<int32_t>(search.order.size()), search.order.data(),
               *search.matrix, p);
  search.times[TIME_ALIGNMENTS] = UT_get_times(1);
  show_time("Write results ", p);
  UT_reset_times();
  if (p->SHOW_BLURB != 0) print_times2(std_out, search.times, residues(search.query), p->binfo->nres);
  p->binfo = nullptr;
}

}  // namespace zelvan
