// Profiles of weight method 0: plain counts of the aligned residues.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "driver/params.h"
#include "seq/matrix.h"
#include "util/memory.h"

namespace zelvan {

// calc_profile - rewrites the table from counts.
// Does   adds the query itself to the counts (so that no total is 0); table[c][i] = mean score of code c over
//        the counted codes, an integer quotient truncated toward zero; where gaps were counted the gap row
//        becomes ln(gaps / (gaps + total)) x PRECISION, gaps being part of the total, too; last, every entry
//        is stretched so that the table's extremes, special rows and position 0 included, equal the matrix's.
//        The gap rows take part in all of it: as penalties they are zero or negative.
// In     query: codes; qlen: stored length; count[c][i]: how often code c was aligned to position i
// Out    table x PRECISION, truncated toward zero
// Returns total[0..qlen-2]: codes counted at each position
// Ends   when an entry of the gap row does not fit 32 bits (status -1)
UTvector<int32_t> calc_profile(const int8_t* query, int32_t qlen, const ScoreMatrix& matrix,
                               LookupTable& table, LookupTable& count, const Params* p);

}  // namespace zelvan
