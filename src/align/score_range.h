// The proof that no score of a search leaves 32 bits.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"

namespace zelvan {

// scores_fit - whether no cell of an alignment of the table with a target of up to `longest` (stored length)
//        can leave 32 bits.
// Does   a path meets each query position at most once opposite a residue, so that no cell exceeds the sum of
//        the largest entries of the positions; each gap step with a negative penalty adds at most its size,
//        and a path has no more steps than both sequences have positions. Cells are never negative, so that
//        what is taken from them cannot leave the range on the other side
// In     matrix.dbcount: once residues are counted, the rows of codes that do not occur are left out, and so
//        are the penalties in the gap rows unless the database has their characters as residues
//        the penalties of the record and, in the modes 210 and 212, of the table's gap rows
bool scores_fit(const LookupTable& table, const ScoreMatrix& matrix, int32_t longest, const Params* p);

// check_score_range - the same for the sequences seqs[0..n-1].
// Ends   when their scores may not fit (status -1)
void check_score_range(const LookupTable& table, const ScoreMatrix& matrix, const SeqRec* seqs, int32_t n,
                       const Params* p);

}  // namespace zelvan
