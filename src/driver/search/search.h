// What every search does, whatever it compares: the query, the database, the times, and the end of the run.
// The drivers of the modes fill in what lies between.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>

#include "align/lookup.h"
#include "align/score_range.h"
#include "bdb/database.h"
#include "driver/params.h"
#include "driver/progress.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/memory.h"
#include "util/streams.h"
#include "util/timing.h"

namespace zelvan {

// What one run works on.
struct Search {
  const ScoreMatrix* matrix = nullptr;  // lives for the process
  SeqStore query_store;
  SeqRec query;              // letters as read, later codes
  LookupTable table;         // of the query; a profile from the second iteration on
  Database database;         // codes once encode_database was called
  UTvector<int32_t> scores;  // [n] of the latest scan, x PRECISION
  UTvector<int32_t> order;   // the latest ranking, best last; empty until there is one
  RunTimes times;
};

// read_query - reads the query as letters, warns when it is of the wrong kind, and shows it with VERBOSE.
// Ends   as get_query_seq
void read_query(Search& search, Params* p);

// read_database - loads the database as it is stored, and warns when it is of the wrong kind.
// Ends   as load_database
void read_database(Search& search, Params* p);

// encode_database - has the database read as codes, see bdb/database.h.
void encode_database(Search& search, const Params* p, const std::function<void(SeqRec&)>& translate = {});

// load_phase - runs `load` and fills the load slot, which covers all of it whatever readings it shows on the
// way.
template <class Load>
void load_phase(Search& search, Load load) {
  const Stopwatch before = UT_keep_times();
  load();
  UT_return_to_times(before);
  search.times[TIME_LOAD] = UT_get_times(1);
}

// scan_phase - runs `scan` and fills the scan slot, which covers the scan alone, and so the rate.
// In     label: of the times that TIME above 5 shows
// Ends   when scores could leave 32 bits (status -1)
template <class Scan>
void scan_phase(Search& search, const char* label, Scan scan, const Params* p) {
  return_hits(search.database);
  check_score_range(search.table, *search.matrix, search.database.seqs, search.database.n, p);
  search.scores.assign(static_cast<std::size_t>(search.database.n), 0);
  // A lost file of volumes ends the run at once.
  std::fflush(std_out);
  std::fflush(std_err);
  UT_get_times(1);  // a reading that nobody sees
  scan();
  check_unchanged(search.database.volumes);
  search.times[TIME_SCAN] = UT_get_times(1);
  show_time(label, p);
}

// finish_search - extracts the best sequences when that is asked for, and writes the times block.
// Does   nothing is extracted without a ranking
void finish_search(Search& search, Params* p);

}  // namespace zelvan
