// Loading a binary database: two bulk reads, no parsing, no copying of residues.
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "seq/database_info.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/memory.h"

struct BinaryDatabase {
  BdbInfo info;
  UTvector<SeqRec> seqs;  // pointing into the store's one block
  SeqStore store;
};

// loadbdb - reads the two files named by BDB_ROOT.
// Does   sets p->binfo to the header and p->APPLY_INDEX to its index flag (1: residues are codes)
// Ends   on a file that cannot be opened or that is damaged, and when codes were made with another alphabet
//        (status -1)
void loadbdb(BinaryDatabase& out_database, const ScoreMatrix& matrix, Params* p);
