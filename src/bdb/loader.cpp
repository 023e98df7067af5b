#include "bdb/loader.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

#include "bdb/index_reader.h"
#include "bdb/index_record.h"
#include "driver/progress.h"
#include "util/failure.h"
#include "util/streams.h"
#include "util/timing.h"

namespace zelvan {
namespace {

// A part of the sequence file that a record points to.
struct Piece {
  int64_t at;
  int64_t end;
  bool residues;
  int32_t number;  // of the sequence, from 1
};

// Letters are encoded where they lie. What another piece shares with them would be encoded twice, or be
// encoded though it is a text.
void check_shared_letters(const BinaryDatabase& database, const FileRec& index_file) {
  const char* const text = database.text.data();
  UTvector<Piece> pieces;
  pieces.reserve(3 * database.seqs.size());
  int32_t number = 0;
  for (const SeqRec& s : database.seqs) {
    ++number;
    const auto add = [&](const char* from, int64_t size, bool residues) {
      pieces.push_back({from - text, from - text + size, residues, number});
    };
    add(s.id, int64_t{s.ilen} + 1, false);
    add(s.title, int64_t{s.tlen} + 1, false);
    add(reinterpret_cast<const char*>(s.seq), s.len, true);
  }
  std::sort(pieces.begin(), pieces.end(), [](const Piece& a, const Piece& b) { return a.at < b.at; });
  int64_t end = 0;  // of the pieces so far
  int64_t residues_end = 0;
  for (const Piece& piece : pieces) {
    if (piece.at < residues_end || (piece.residues && piece.at < end)) {
      end_damaged(index_file, "sequence %d: it shares residues with another piece", piece.number);
    }
    end = std::max(end, piece.end);
    if (piece.residues) residues_end = piece.end;
  }
}

void index_sequences(IndexBytes& index, BinaryDatabase& database, const ScoreMatrix& matrix,
                     const Params* p) {
  char* text = database.text.data();
  bool ascending = true;  // each piece behind the one before, as the builder writes them: nothing is shared
  int64_t end = 0;
  int64_t residues = 0;
  int32_t number = 0;
  for (SeqRec& s : database.seqs) {
    ++number;
    IndexRecord record;
    take(index, &record, sizeof record, "the records");
    const char* fault = fault_of_record(record, database.text.size());
    if (fault != nullptr) end_damaged(index.file, "sequence %d: %s", number, fault);
    s.id = text + record.id_at;
    s.title = text + record.title_at;
    s.seq = reinterpret_cast<int8_t*>(text + record.seq_at);
    s.ilen = record.ilen;
    s.tlen = record.tlen;
    s.len = record.len;
    fault = fault_of_sequence(s, database.seqs[0].seq[0], database.info, matrix);
    if (fault != nullptr) end_damaged(p->BDB_SEQ_FILE, "sequence %d: %s", number, fault);
    ascending = ascending && record.id_at >= end && record.title_at > int64_t{record.id_at} + record.ilen &&
                record.seq_at > int64_t{record.title_at} + record.tlen;
    end = static_cast<int64_t>(record.seq_at) + record.len;
    residues += record.len - 2;
  }
  // Codes may be shared, but counts of residues have 32 bits, as the size of the file.
  if (residues > static_cast<int64_t>(database.text.size())) {
    end_damaged(index.file, "its records hold %lld residues, more than the sequence file has characters",
                static_cast<long long>(residues));
  }
  if (!ascending && database.info.index_flag != 1) check_shared_letters(database, index.file);
}

// The builder takes an index away before it stores other sequences. An index that has kept its name until the
// sequence file was open, too, is therefore of the same build.
void check_still_there(const FileRec& index_file) {
  struct stat opened;
  struct stat named;
  if (fstat(fileno(index_file.stream), &opened) == 0 && stat(index_file.name.c_str(), &named) == 0 &&
      opened.st_dev == named.st_dev && opened.st_ino == named.st_ino) {
    return;
  }
  UTend_input(std_err, "Database file %s was replaced while it was being opened: start the run again\n",
              index_file.name.c_str());
}

// A build that is killed while it stores its files can leave sequences without an index. Opening it fails
// next.
void tell_missing_index(const Params* p) {
  const char* index = p->BDB_INDEX_FILE.name.c_str();
  const char* sequences = p->BDB_SEQ_FILE.name.c_str();
  if (access(sequences, F_OK) != 0 || access(index, F_OK) == 0) return;
  std::fprintf(
      std_err,
      "Database file %s has lost its index file: a build did not come to its end, or only one of the two "
      "was copied\nCopy both files of the database again, or build it again with MODE 99\n",
      sequences);
}

}  // namespace

void loadbdb(BinaryDatabase& out_database, const ScoreMatrix& matrix, Params* p) {
  const bool own_stopwatch = !UT_keep_times().running;
  if (p->TIME > 5) UT_init_times();
  progress("Opening Index file\n", p);
  tell_missing_index(p);
  UTfileopen(p->BDB_INDEX_FILE, "rb", 1);
  progress("Opening database file\n", p);
  UTfileopen(p->BDB_SEQ_FILE, "rb", 1);
  check_still_there(p->BDB_INDEX_FILE);

  progress("Loading .in preamble\n", p);
  const UTbuffer<char> index_bytes = read_bulk(p->BDB_INDEX_FILE.stream, INT64_MAX);
  UTfileclose(p->BDB_INDEX_FILE, 1);
  IndexBytes index{p->BDB_INDEX_FILE, index_bytes.data(), index_bytes.size()};
  BdbInfo& info = out_database.info = take_header(index);
  if (info.index_flag == 1) check_alphabet(info, matrix);
  if (p->VERBOSE != 0) show_info(info);
  p->binfo = &info;
  p->APPLY_INDEX = info.index_flag;
  show_time("loadbdb: have read header info: ", p);

  progress("Now reading the seq file into buffer\n", p);
  if (const int64_t size = bytes_of(p->BDB_SEQ_FILE.stream); size > info.totchar) {
    end_damaged(p->BDB_SEQ_FILE, "it has %lld bytes, but its index file counts %lld: they are of two builds",
                static_cast<long long>(size), static_cast<long long>(info.totchar));
  }
  out_database.text = read_bulk(p->BDB_SEQ_FILE.stream, info.totchar);
  UTfileclose(p->BDB_SEQ_FILE, 1);
  show_time("loadbdb: read sequence database: ", p);
  if (out_database.text.size() < static_cast<std::size_t>(info.totchar)) {
    std::fprintf(std_err, "fread not read all binfo->totchar characters %lld %lld\n",
                 static_cast<long long>(out_database.text.size()), static_cast<long long>(info.totchar));
  }
  progress("Now creating seqs array\n", p);
  out_database.seqs.resize(static_cast<std::size_t>(info.nseq));
  show_time("loadbdb: malloc'd seqs array: ", p);
  index_sequences(index, out_database, matrix, p);
  show_time("loadbdb indexed seqs array complete ", p);
  if (p->TIME > 5 && own_stopwatch) UT_reset_times();
}

}  // namespace zelvan
