// Building a set of volumes from a text of any size, read once. Sequences go into a spool, in the bytes that
// sequence files hold; when all are there, each volume in turn is put together in memory and written.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/composition.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// Two files without a name, in the folder of the database: whatever ends the run, nothing of them stays.
struct Spool {
  FILE* pieces = nullptr;   // of each sequence identifier, title and residues as they will be stored
  FILE* lengths = nullptr;  // of each sequence the lengths of the three
  UTstring name;            // for messages
  int64_t nseq = 0;
  int64_t nres = 0;
  int64_t characters = 0;
  int64_t largest = 0;  // characters of one sequence
  ByteCounts counts{};  // of the residues
};

// open_spool - an empty spool. Ends when its files cannot be made (status -1).
Spool open_spool(const Params* p);

// add_to_spool - adds sequences of a SeqStore, residues as they are to be stored.
// Ends   when they cannot be written (status 1), or when one of them is too large for any volume (status -1)
void add_to_spool(Spool& spool, const SeqRec* seqs, int32_t n);

// build_volumes - writes the set: as few volumes as the limit allows, of about the same size.
// Does   with DO_SORT 1 the order is that of a single database, over the whole set. Memory is that of one
//        volume, and 12 bytes for each sequence while they are sorted. A line on std_err tells how many
//        volumes
// Ends   when a file cannot be written or replaced (status 1), or opened (status -1)
void build_volumes(Spool& spool, const ScoreMatrix& matrix, const Params* p);

}  // namespace zelvan
