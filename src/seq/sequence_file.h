// Sequence files in FASTA and PIR layout, read in one pass through a buffer of our own.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/database_info.h"
#include "seq/sequence.h"
#include "util/memory.h"

// A sequence file being read. The stream is not owned.
struct SeqReader {
  FILE* stream = nullptr;
  UTvector<char> buffer;
  std::size_t at = 0;       // next unread byte of the buffer
  std::size_t end = 0;      // bytes in the buffer
  UTvector<char> line;      // the header line of the record being read
  UTvector<char> residues;  // and its residues
};

SeqReader make_reader(FILE* stream);

// gseq_fasta, gseq_pir - the next record, its residues as upper-case letters, stored in `store`.
// Returns false at the end of the file and on a layout error (reported on std_err)
// Ends   when the sequence has more than MAX_SEQ_LEN-4 residues (status -1)
bool gseq_fasta(SeqReader& reader, SeqStore& store, SeqRec& out_record, const Params* p);
bool gseq_pir(SeqReader& reader, SeqStore& store, SeqRec& out_record, const Params* p);

// get_query_seq - opens QSEQ_FILE (left open) and reads its first record.
// Ends   on every fault, and when the query has more than MP_LEN - 2 residues (status -1)
SeqRec get_query_seq(SeqStore& store, Params* p);
constexpr int32_t MP_LEN = 16000;

// get_db_seq - the next record of the database in the layout of DB_FORMAT; false at its end.
bool get_db_seq(SeqReader& reader, SeqStore& store, SeqRec& out_record, const Params* p);

// A text database in memory, letters until encoded.
struct TextDatabase {
  UTvector<SeqRec> seqs;
  SeqStore store;
  int64_t nres = 0;  // residues of all sequences
};

// read_text_database - opens DB_FILE and reads it whole.
// Does   with progress, "Opening database\n" and "Loading database\n" on std_err around the open
// Ends   when the file cannot be opened, and when it holds more than MAX_NSEQ sequences (status -1)
void read_text_database(TextDatabase& out_database, bool progress, Params* p);

// text_database_info - the header that stands for a text database: the two counts.
// Ends   when the residues do not fit 32 bits (status -1)
BdbInfo text_database_info(const TextDatabase& database, const Params* p);
