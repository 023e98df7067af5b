// The paths of one pair of sequences whose move flags are filled.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "align/trace/move_flags.h"
#include "align/trace/path_store.h"

namespace zelvan {

// One pair, its flags filled with the threshold of the paths asked for.
struct FlaggedPair {
  int32_t qlen;  // stored lengths
  int32_t dlen;
  const int8_t* target;
  const LookupTable& table;
  GapRows gaps;
  const PathScheme& scheme;
  const MoveFlags& flags;
  int32_t threshold;
};

// find_all_paths - the definition, cell by cell: every cell carries where its path began and the path's best
// cell. A path ends where the cell diagonally behind it falls to 0, or at the end of either sequence; of the
// paths from one start the best is kept, of equals the first.
// Out    store: the paths whose best is at least the threshold and that span more than one position of either
//        sequence, in the order in which the first from each start ended
void find_all_paths(const FlaggedPair& pair, PathStore& store);

// find_high_paths - the same paths for no more than the work on those that reach the threshold: a path is
// followed from its first cell of that value on. Faster where few cells are so high.
// In     sweep: what filled the flags left; no negative penalty
void find_high_paths(const FlaggedPair& pair, const FlagSweep& sweep, PathStore& store);

}  // namespace zelvan
