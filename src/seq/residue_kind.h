// Protein where a mode reads DNA, or DNA where it reads protein: the search would go on and its result mean
// nothing.
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "seq/sequence.h"

namespace zelvan {

enum class ResidueKind { UNCERTAIN, DNA, PROTEIN };

// residue_kind - what the letters of some sequences, taken together, are for certain.
// In     seqs[0..n-1]: letters, not codes; as many of each as a query may have are looked at
// Returns DNA:     at least 30 letters, all of them bases or codes of ambiguous bases, 90 % A, C, G, T, U or
//         N PROTEIN: a letter that is neither, and less than half A, C, G, T, U or N UNCERTAIN otherwise, as
//         for short peptides
ResidueKind residue_kind(const SeqRec* seqs, int32_t n);

// warn_of_query, warn_of_database - a line on std_err, with the modes to use, when the query or the first ten
// sequences of the database are for certain of the other kind than p->MODE reads. The run goes on.
// In     letters, not codes
void warn_of_query(const SeqRec& query, const Params* p);
void warn_of_database(const SeqRec* seqs, int32_t n, const Params* p);

}  // namespace zelvan
