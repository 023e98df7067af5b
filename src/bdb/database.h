// The database of a run, whichever form it has on disk.
#pragma once

#include <cstdint>
#include <functional>

#include "bdb/loader.h"
#include "bdb/volumes.h"
#include "driver/params.h"
#include "seq/database_info.h"
#include "seq/matrix.h"
#include "seq/residue_reader.h"
#include "seq/sequence.h"
#include "seq/sequence_file.h"
#include "util/memory.h"

namespace zelvan {

// A text database or a binary one in memory, or a set of volumes, mapped from its files.
struct Database {
  SeqRec* seqs = nullptr;  // [n], owned by the part that was filled
  int32_t n = 0;
  TextDatabase text;
  BdbInfo text_info;  // stands for the header that a text database lacks
  BinaryDatabase binary;
  VolumeSet volumes;
  ReadCodes read;          // of volumes: their sequences as codes, once encode_database was called
  SeqStore hits;           // codes of the sequences that are lent
  UTvector<int32_t> lent;  // their numbers
};

// load_database - reads the binary database or opens the set of volumes when BDB_ROOT was given, otherwise
// reads DB_FILE.
// Out    out_database must stay where it is: p->binfo points into it
// Ends   on every fault of the files, and when a text database has more than MAX_NSEQ sequences or more
//        residues than 32 bits count (status -1)
void load_database(Database& out_database, const ScoreMatrix& matrix, Params* p);

// stored_as_codes - whether the residues of the database that load_database read are codes already.
bool stored_as_codes(const Params* p);

// encode_database - has residues read as codes from here on: letters in memory are encoded where they stand,
// volumes stay as they are and each sequence is encoded whenever it is read.
// In     translate: may be empty; called with each sequence of volumes before it is encoded
void encode_database(Database& database, const ScoreMatrix& matrix, const Params* p,
                     const std::function<void(SeqRec&)>& translate = {});

// scan_targets - the sequences of an encoded database, for a scan.
ScanTargets scan_targets(const Database& database);

// add_database_frequencies - GetDBFreqs over an encoded database; the counts of volumes come from their list.
void add_database_frequencies(const Database& database, Params* p);

// lend_hits - makes sure that the best `count` of the sequences hold codes: those of volumes are copied, and
// their records point to the copies until return_hits. What happens to the files does not touch them any
// more.
// In     order: a permutation of all sequences, best last
void lend_hits(Database& database, const UTvector<int32_t>& order, int64_t count);
void return_hits(Database& database);

// length_order - the numbers 0..n-1 of the sequences by ascending length, ties as UTindexx leaves them.
UTvector<int32_t> length_order(const SeqRec* seqs, int32_t n);

}  // namespace zelvan
