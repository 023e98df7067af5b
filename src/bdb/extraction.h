// Sequences pulled out of a database.
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"

namespace zelvan {

// subset_db - mode 667: an evenly spaced sample of the text database DB_FILE by length, to std_out; of a
// binary one when BDB_ROOT was given and DB_FILE was not.
// Does   from the longest sequence downwards, every (sequences / NSUBSET)-th; never the shortest. Residues on
//        one line, letters as read
// Ends   when NSUBSET is below 1 or larger than the number of sequences, when there is none, and on every
//        fault of the file (status -1)
void subset_db(Params* p);

// extract_seqs - writes the best sequences of a search to EXTRACT_FILE: positions n-1 down to, but excluding,
// n - EXTRACT_SEQ + 1 of `order`, that is EXTRACT_SEQ - 2 of them. Does nothing when EXTRACT_SEQ is below 1.
// In     order[0..n-1]: numbers of encoded sequences, best last
// Ends   when the file cannot be opened (status -1) or written (status 1)
void extract_seqs(const SeqRec* seqs, int32_t n, const int32_t* order, const ScoreMatrix& matrix, Params* p);

// ex1 - mode 100: the sequences named in a score list read from p->STDIN, from the database in use to
// EXTRACT_FILE, in the order of the list. An identifier that the database does not hold brings a warning.
// Ends   as extract_seqs and ReadIdListFromScanFile, on every fault of the database, and when EXTRACT_SEQ is
//        below 1 (status -1)
void ex1(Params* p);

}  // namespace zelvan
