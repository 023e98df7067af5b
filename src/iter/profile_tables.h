// The tables of a profile in the report.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "driver/params.h"
#include "seq/matrix.h"

namespace zelvan {

// print_frequency_table, print_profile - counts and scores of the current iteration on std_out, a line for
// every query position.
// In     qlen: stored length; count: plain numbers; table x PRECISION
void print_frequency_table(int32_t qlen, const LookupTable& count, const ScoreMatrix& matrix,
                           const Params* p);
void print_profile(int32_t qlen, const LookupTable& table, const ScoreMatrix& matrix, const Params* p);

}  // namespace zelvan
