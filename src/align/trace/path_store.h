// Local alignment paths of one pair of sequences, kept by their start point.
#pragma once

#include <cstdint>

#include "util/memory.h"

namespace zelvan {

struct PathRec {
  int32_t start_i = 0;  // query position where the path begins
  int32_t start_j = 0;  // target position where it begins
  int32_t end_i = 0;    // best cell on the path so far
  int32_t end_j = 0;
  int32_t best = 0;   // its value, x PRECISION
  int32_t score = 0;  // value of the cell that holds this record
};

// Paths kept, one slot per query position of their start; total over all slots.
struct PathStore {
  UTvector<UTvector<PathRec>> slots;  // [0 .. qlen-1]
  int32_t total = 0;
};

// empty_store - one empty slot for every query position (stored length).
void empty_store(PathStore& store, int32_t qlen);

// present - 1 when the slot already holds a path with this start_j, which a better record replaces; else 0.
int32_t present(const PathRec& record, UTvector<PathRec>& slot);

// addsco - appends a record to the slot of its start_i.
void addsco(const PathRec& record, PathStore& store);

// dosort - empties the store into one list, highest best first, equals as UTindexx leaves them.
// Ends   when slots and total disagree (status 0)
UTvector<PathRec> dosort(PathStore& store);

}  // namespace zelvan
