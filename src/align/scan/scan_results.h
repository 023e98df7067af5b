// The results of one scan.
#pragma once

#include <cstdint>

#include "seq/sequence.h"

namespace zelvan {

// Column by column, indexed 0..n-1 by database sequence; nothing is owned. Columns that nobody asks for may
// be null.
struct ResultRec {
  const SeqRec* seqs = nullptr;
  const int32_t* scores = nullptr;       // x PRECISION
  const double* standardised = nullptr;  // x of the length-dependent fit
  const double* significance = nullptr;  // P or E value
  const int32_t* zscores = nullptr;      // x PRECISION
  const int32_t* order = nullptr;        // permutation, best last
  int32_t n = 0;
  int32_t unranked = 0;  // so many at the front of `order` are in none, and no list asks for them
};

// hit_at_rank - the number of the sequence at a rank, 0 for the best hit.
inline int32_t hit_at_rank(const ResultRec& results, int32_t rank) {
  return results.order[results.n - 1 - rank];
}

}  // namespace zelvan
