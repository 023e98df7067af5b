// What entered and what left the set of hits at or below PROBCUT2 from one iteration to the next.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "report/score_list.h"
#include "util/memory.h"

namespace zelvan {

struct IterHit {
  int32_t seqno = 0;  // database sequence, from 0
  int32_t score = 0;  // x PRECISION
  double x = 0;
  double significance = 0;
  int32_t match = -1;  // position of the same sequence in the other iteration's list, or -1
};
using IterHistory = UTvector<UTvector<IterHit>>;  // [iteration][rank], best first

// iter_hist - records the best `count` hits of an iteration in a slot of their own.
// In     results: scores, standardised, significance and order are read; 0 <= count <= results.n
// Ends   when the iteration exceeds NITER - 1 (status 0)
void iter_hist(IterHistory& history, const ResultRec& results, int32_t iteration, int32_t count,
               const Params* p);

// print_changes - pairs this iteration's hits with the previous one's and writes what left and what entered.
// In     history: the slots iteration - 1 and iteration; `match` is rewritten
//        seqs: indexed by IterHit::seqno
// Returns the number of entry lines written, headings not counted: 0 says that nothing changed; or -1 for
//        iteration 0, which has nothing to compare with
int32_t print_changes(IterHistory& history, const SeqRec* seqs, int32_t iteration, FILE* stream,
                      const Params* p);

}  // namespace zelvan
