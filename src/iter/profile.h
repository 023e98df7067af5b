// Profiles: the significant hits of one iteration rewrite the query's lookup table for the next scan.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "align/trace/traced_hits.h"
#include "driver/params.h"
#include "report/multiple_alignment.h"

namespace zelvan {

// build_profile - realigns the best hits and rewrites the table from them.
// Does   aligns each of the nsel best hits against the current table; a path of at least MIN_LEN columns
//        whose significance is at or below PROBCUT2 becomes a row; then weight method 0 (profile_counts.h), 1
//        or 2 (profile_log_odds.h) makes the new table, any other value of PROFILE_WEIGHT_METHOD leaves it.
//        Prints counts and table on std_out when PRINT_FRQ_TABS and PRINT_PROFILES ask for it
// In     nsel: hits at or below PROBCUT2; traced: what print_alignments_pp left of this very scan, or nothing
// In/Out table: the one of the scan
// Out    aldat: rows appended, best hit first
// Ends   for any MODE but 200, 202, 210 and 212 once there is a hit to align, and on entries beyond 32 bits
//        (status -1)
void build_profile(const RankedScan& scan, int32_t nsel, TracedHits& traced, LookupTable& table,
                   AlignData& aldat, Params* p);

}  // namespace zelvan
