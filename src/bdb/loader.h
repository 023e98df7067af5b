// Loading a binary database: one bulk read of each file, no parsing, no copying of residues.
#pragma once

#include "driver/params.h"
#include "seq/database_info.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// A binary database in memory.
struct BinaryDatabase {
  BdbInfo info;
  UTvector<SeqRec> seqs;  // [info.nseq], in stored order
  UTbuffer<char> text;    // the sequence file, into which the records point
};

// loadbdb - reads the two files that BDB_ROOT named, p->BDB_INDEX_FILE and p->BDB_SEQ_FILE.
// Does   residues become codes only when the file's index flag is 1; otherwise they are letters still. Every
//        field is checked before it is used, and both files must be of one build; but records may point to
//        their pieces in any order, and the header's count of residues is taken as it stands. With TIME above
//        5 each phase is timed on std_err; a stopwatch that was already running goes on running
// Out    out_database must stay where it is: p->binfo points to its header. p->APPLY_INDEX is the index flag
// Ends   on a file that cannot be opened, on a damaged file (the message names the file and the field or
//        record), and when codes were made with another alphabet than the matrix has (all status -1). A
//        sequence file that is shorter than its header says brings a warning only, as long as no record
//        needs what is missing
void loadbdb(BinaryDatabase& out_database, const ScoreMatrix& matrix, Params* p);

}  // namespace zelvan
