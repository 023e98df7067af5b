// The log of the length-binned statistics.
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "seq/sequence.h"
#include "stats/zscore_stats.h"

namespace zelvan {

// dump_stats - writes "zelvan_dump_stats.log" in the current directory: the fitted line, its bins, and the
// histogram of observed z-scores beside what chance alone would give.
// In     zscores[0..stats.n-1] of get_zscores
// Ends   when the file cannot be opened or written (status 1)
void dump_stats(const ZStats& stats, const int32_t* zscores, const SeqRec& query, const Params* p);

}  // namespace zelvan
