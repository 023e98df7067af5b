// Position-based sequence weights of the rows of a multiple alignment, afresh for every query position.
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "report/multiple_alignment.h"
#include "seq/matrix.h"
#include "util/memory.h"
#include "util/table.h"

namespace zelvan {

// The weights at one query position, and what is kept to reach the next position cheaply.
struct RowWeights {
  // ---- the result
  double query = 0;          // weight of the query; it and all of `row` sum to 1
  UTvector<double> row;      // [row] 0 for rows that are not active
  UTvector<char> active;     // [row] 1: covers the position and was not filtered away
  int32_t nactive = 0;       // 0: the position has no weights
  int32_t range_start = 0;   // common range: query positions that every covering row covers
  int32_t range_end = 0;     // inclusive
  double sum = 0;            // of the weights before they were made to sum to 1
  double mean_distinct = 0;  // mean over the common range of the distinct codes in a column, gap excluded

  // ---- kept between positions
  UTvector<char> covering;     // [row] covers the position, before filtering
  Table<int32_t> count;        // [query position][code] among active rows and the query
  Table<double> contribution;  // [query position][code] 1 / (count x distinct codes), in the common range
};

// start_row_weights - weights for an alignment before its first position.
RowWeights start_row_weights(const AlignData& aldat, const ScoreMatrix& matrix);

// move_row_weights - brings the weights to query position i.
// Does   finds the rows that cover i and their common range; with p->PIDTHRESH < 1 filters out redundant
//        ones; then each column of the common range gives every sequence 1 / (sequences with its code there x
//        distinct codes there), the gap being a code. Any order of positions; cheap when a position has the
//        rows of the one before. An invalid common range is reported on std_err and leaves no row active
// Ends   when the filter switches every row off (status 1)
// Source Henikoff & Henikoff 1994, J. Mol. Biol. 243:574
void move_row_weights(RowWeights& weights, int32_t i, const AlignData& aldat, const ScoreMatrix& matrix,
                      const Params* p);

// pidfilter - switches off the rows that resemble a reference.
// In     reference[range_start..range_end]: codes; rows from first_row on are examined
//        threshold: fraction of the common range that must be identical, columns where the reference has a
//        gap never are
// Out    active[row] and nactive lowered
// Ends   when no active row is left: "Error in pidfilter: *nactive = %d\n", status 1
void pidfilter(const int8_t* reference, const AlignData& aldat, int32_t first_row, UTvector<char>& active,
               int32_t range_start, int32_t range_end, int32_t& nactive, int8_t gap, double threshold);

}  // namespace zelvan
