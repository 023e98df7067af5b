// What entered and what left the set of hits below PROBCUT2 from one iteration to the next.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "report/score_list.h"
#include "util/memory.h"

struct IterHit {
  int32_t seqno = 0;
  int32_t score = 0;  // x PRECISION
  double x = 0;
  double significance = 0;
  int32_t match = -1;  // position of the same sequence in the other iteration's list, or -1
};
using IterHistory = UTvector<UTvector<IterHit>>;  // [iteration][rank], best first

// iter_hist - records the best `count` hits of an iteration.
// Ends   when the iteration exceeds NITER - 1 (status 0)
void iter_hist(IterHistory& history, const ResultRec& results, int32_t iteration, int32_t count,
               const Params* p);

// print_changes - pairs this iteration's hits with the previous one's and writes what left and what entered.
// Returns the number of entry lines written, or -1 for iteration 0
int32_t print_changes(IterHistory& history, const SeqRec* seqs, int32_t iteration, FILE* stream,
                      const Params* p);
