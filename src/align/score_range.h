// The proof that no score of a search leaves 32 bits.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"

namespace zelvan {

// check_score_range - bounds every cell of the alignments of a table with the sequences seqs[0..n-1].
// Does   a path meets each query position at most once opposite a residue, so that no cell exceeds the sum of
//        the largest entries of the positions; each gap step with a negative penalty adds at most its size,
//        and a path has no more steps than both sequences have positions. Cells are never negative, so that
//        what is taken from them cannot leave the range on the other side
// In     the penalties of the record and, in the modes 210 and 212, of the table's gap rows
// Ends   when the bound is more than 2^31 - 1 (status -1)
void check_score_range(const LookupTable& table, const ScoreMatrix& matrix, const SeqRec* seqs, int32_t n,
                       const Params* p);

}  // namespace zelvan
