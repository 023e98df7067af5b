// Sequence files in FASTA and PIR layout, read in one pass through a buffer of our own. Residues are returned
// as upper-case letters; whatever is no ASCII letter is skipped between them. Identifiers and titles are kept
// whole, however long; a carriage return before a newline does not belong to them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>

#include "driver/params.h"
#include "seq/database_info.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// A sequence file being read. It reads ahead: nothing else may read the stream meanwhile.
struct SeqReader {
  FILE* stream = nullptr;      // not owned
  const char* name = nullptr;  // of the file, for messages; not owned
  UTvector<char> buffer;
  std::size_t at = 0;        // next unread byte of the buffer
  std::size_t end = 0;       // bytes in the buffer
  int64_t lines_before = 0;  // newlines before the bytes of the buffer
  bool line_ended = false;   // the line last read as a text had a newline
  int64_t records = 0;       // headers read
  bool unnamed = false;      // the last of them had no identifier, which ended the reading
  UTvector<char> line;       // the line last read as a text, zero-terminated, without its newline
  UTvector<char> title;      // PIR: the title line
  UTvector<char> residues;   // room for the residues of the record being read; never shrinks
  // May be empty; called before reading ends the run, with what was read whole.
  std::function<void()> before_end;
};

// make_reader - a reader at the current position of an open file.
SeqReader make_reader(FILE* stream, const char* name);

// gseq_fasta, gseq_pir - the next record, stored in `store`. Lines before one that begins with ">" are
// skipped.
// In     FASTA: ">identifier title", then residues up to the next ">", wherever it stands. No title: "-".
//        PIR: ">identifier", a title line, residues up to "*"
// Returns false, with nothing stored, at the end of the file and on a layout error (reported on std_err: no
//        identifier in FASTA, with file and line, and reader.unnamed is set; no title line or no "*" in PIR)
// Ends   when the sequence has more than MAX_SEQ_LEN-4 residues, and when reading fails (status -1)
bool gseq_fasta(SeqReader& reader, SeqStore& store, SeqRec& out_record, const Params* p);
bool gseq_pir(SeqReader& reader, SeqStore& store, SeqRec& out_record, const Params* p);

// get_query_seq - opens QSEQ_FILE (left open), as open_text_database does DB_FILE, and reads its first record
// in the layout of QSEQ_FORMAT (0 PIR, 1 FASTA). A query without residues passes (len 2).
// Ends   when there is no record, on every fault of the file, and when the query is longer than MP_LEN
//        (status -1)
SeqRec get_query_seq(SeqStore& store, Params* p);

// get_db_seq - the next record of the database in the layout of DB_FORMAT (0 PIR, 1 FASTA); false at its end.
// Ends   on another DB_FORMAT (status -1; the message shows QSEQ_FORMAT, deliberately)
bool get_db_seq(SeqReader& reader, SeqStore& store, SeqRec& out_record, const Params* p);

// open_text_database - opens DB_FILE and returns a reader of it, behind a byte-order mark.
// Ends   when the file cannot be opened, which option names one being said first when none was given, and
//        when it is compressed (status -1)
SeqReader open_text_database(Params* p);

// A text database in memory, letters until encoded.
struct TextDatabase {
  UTvector<SeqRec> seqs;  // in file order
  SeqStore store;
  int64_t nres = 0;        // residues of all sequences
  bool cut_short = false;  // the reading ended at a record without identifier
};

// read_text_database - opens DB_FILE as above, reads it whole and closes it.
// Does   with progress, "Opening database\n" and "Loading database\n" on std_err around the open
// Ends   also when it holds more than MAX_NSEQ sequences and, unless it is copied only, more residues than a
//        search takes from a text (status -1)
void read_text_database(TextDatabase& out_database, bool progress, Params* p);

// end_too_many - ends the run over more than MAX_NSEQ sequences in DB_FILE (status -1).
[[noreturn]] void end_too_many(const Params* p);

// require_whole - what copies sequences must not take a part of a database for the whole. A search goes on
// with what came before a record without identifier.
// Ends   when the database was cut short (status -1)
void require_whole(const TextDatabase& database, const Params* p);

// text_database_info - the header that stands for a text database: its counts.
BdbInfo text_database_info(const TextDatabase& database);

}  // namespace zelvan
