// The database of a run, whichever form it has on disk.
#pragma once

#include <cstdint>

#include "bdb/loader.h"
#include "driver/params.h"
#include "seq/database_info.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "seq/sequence_file.h"
#include "util/memory.h"

namespace zelvan {

// A database in memory: a text database or a binary one.
struct Database {
  SeqRec* seqs = nullptr;  // [n], owned by the part that was filled
  int32_t n = 0;
  TextDatabase text;
  BdbInfo text_info;  // stands for the header that a text database lacks
  BinaryDatabase binary;
};

// load_database - reads the binary database when BDB_ROOT was given, otherwise DB_FILE.
// Out    out_database must stay where it is: p->binfo points into it
// Ends   on every fault of the files, and when a text database has more than MAX_NSEQ sequences or more
//        residues than 32 bits count (status -1)
void load_database(Database& out_database, const ScoreMatrix& matrix, Params* p);

// stored_as_codes - whether the residues of the database that load_database read are codes already.
bool stored_as_codes(const Params* p);

// length_order - the numbers 0..n-1 of the sequences by ascending length, ties as UTindexx leaves them.
UTvector<int32_t> length_order(const UTvector<SeqRec>& seqs);

}  // namespace zelvan
