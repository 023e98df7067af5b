// What to do when the statistics of a search could not be fitted.
#pragma once

#include <cstdint>

#include "seq/sequence.h"

namespace zelvan {

// fit_remedy - a sentence with the reason and the way out.
// In     code: of do_lpfit, positive; query_length in residues; seqs[0..n-1]: the database
const char* fit_remedy(int32_t code, int32_t query_length, const SeqRec* seqs, int32_t n);

}  // namespace zelvan
