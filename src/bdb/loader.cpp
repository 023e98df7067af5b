#include "bdb/loader.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstring>

#include "bdb/index_record.h"
#include "driver/progress.h"
#include "util/failure.h"
#include "util/streams.h"
#include "util/timing.h"

namespace zelvan {
namespace {

[[noreturn]] UT_PRINTF(2, 3) void end_damaged(const FileRec& file, const char* format, ...) {
  std::fprintf(std_err, "Database file %s is damaged: ", file.name.c_str());
  va_list values;
  va_start(values, format);
  std::vfprintf(std_err, format, values);
  va_end(values);
  UTend_input(std_err, "\nCopy both files of the database again, or build it again with MODE 99\n");
}

int64_t bytes_of(FILE* stream) {
  struct stat status;
  return fstat(fileno(stream), &status) == 0 ? static_cast<int64_t>(status.st_size) : 0;
}

// The first `most` bytes of an open file, fewer when it has fewer.
UTbuffer<char> read_bulk(FILE* stream, int64_t most) {
  UTbuffer<char> bytes(static_cast<std::size_t>(std::min(most, bytes_of(stream))));
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), stream));
  return bytes;
}

// The index file and how far it has been decoded.
struct IndexBytes {
  const FileRec& file;
  const char* at;
  std::size_t left;
};

void take(IndexBytes& index, void* out_bytes, std::size_t size, const char* field) {
  if (size > index.left) end_damaged(index.file, "it ends before the end of %s", field);
  std::memcpy(out_bytes, index.at, size);
  index.at += size;
  index.left -= size;
}

int32_t take_int(IndexBytes& index, int32_t least, const char* field) {
  int32_t value;
  take(index, &value, sizeof value, field);
  if (value < least) end_damaged(index.file, "%s in the header is %d", field, value);
  return value;
}

UTstring take_bytes(IndexBytes& index, int32_t length, const char* field) {
  const auto size = static_cast<std::size_t>(length);
  UTstring bytes;
  bytes.resize(std::min(size, index.left));
  take(index, bytes.data(), size, field);
  return bytes;
}

// A text whose length counts its zero byte.
UTstring take_text(IndexBytes& index, int32_t length, const char* field) {
  UTstring text = take_bytes(index, length, field);
  if (text.find('\0') != text.size() - 1) {
    end_damaged(index.file, "%s is not as long as its length says", field);
  }
  text.pop_back();
  return text;
}

BdbInfo take_header(IndexBytes& index) {
  constexpr int32_t any = INT32_MIN;
  BdbInfo info;
  info.index_flag = take_int(index, any, "the index flag");
  info.index_length = take_int(index, 1, "the length of the index string");
  info.index = take_bytes(index, info.index_length, "the index string");
  info.nseq = take_int(index, 0, "the number of sequences");
  info.nres = take_int(index, 0, "the number of residues");
  info.totchar = take_int(index, 0, "the total of characters");
  info.date_length = take_int(index, 1, "the length of the date");
  info.date = take_text(index, info.date_length, "the date");
  info.name_length = take_int(index, 1, "the length of the source name");
  info.name = take_text(index, info.name_length, "the source name");
  if (static_cast<std::size_t>(info.nseq) != index.left / sizeof(IndexRecord)) {
    end_damaged(index.file, "the header counts %d sequences, but there are records of %zu", info.nseq,
                index.left / sizeof(IndexRecord));
  }
  return info;
}

// Codes mean the same letters only when letters and gap character are in the same order.
void check_alphabet(const BdbInfo& info, const ScoreMatrix& matrix) {
  const UTstring wanted = matrix.indx.substr(0, static_cast<std::size_t>(matrix.inlen - 3));
  if (info.index.compare(0, wanted.size(), wanted) == 0) return;
  UTend_input(std_err,
              "ERROR: Database and Matrix index strings do not match!!\n\n"
              "Database index string:(%s)\n"
              "Matrix index string  :(%s)\n"
              "If you wish to use this matrix file you can do one of the following:\n"
              "1  modify the matrix so that the index coincides with the databse\n"
              "2  rebuild the database with the APPLY_INDEX flag set to 0 (easiest)\n\n",
              info.index.c_str(), wanted.c_str());
}

void show_info(const BdbInfo& info) {
  std::fprintf(std_err, "\nInformation about this database\nSequence index flag:    %d \n", info.index_flag);
  std::fprintf(std_err, "Length of index string: %d \nThe index string:", info.index_length);
  std::fwrite(info.index.data(), 1, info.index.size(), std_err);
  std::fprintf(std_err, "\nNumber of sequences in database: %d\nNumber of residues in database: %d\n",
               info.nseq, info.nres);
  std::fprintf(std_err, "Total characters in database: %d\n\n", info.totchar);
  std::fprintf(std_err, "Length of date string: %d\nDatabase created on: %s", info.date_length,
               info.date.c_str());
  std::fprintf(std_err, "Length of name string: %d\nFrom: %s\n", info.name_length, info.name.c_str());
}

// Why a record cannot be used, or null. Its three pieces may lie anywhere in the sequence file.
const char* fault_of_record(const IndexRecord& record, std::size_t bytes) {
  const auto past_end = [bytes](int32_t at, int64_t size) { return at + size > static_cast<int64_t>(bytes); };
  if (record.ilen < 0) return "its identifier has a negative length";
  if (record.tlen < 0) return "its title has a negative length";
  if (record.len < 2) return "its residues have a length below 2";
  if (record.id_at < 0 || record.title_at < 0 || record.seq_at < 0) return "it has a negative position";
  if (past_end(record.id_at, int64_t{record.ilen} + 1) ||
      past_end(record.title_at, int64_t{record.tlen} + 1) || past_end(record.seq_at, record.len)) {
    return "it lies past the end of the sequence file";
  }
  return nullptr;
}

bool ends_at(const void* text, int32_t length) {
  return std::memchr(text, 0, static_cast<std::size_t>(length) + 1) ==
         static_cast<const char*>(text) + length;
}

// The same for what the sequence file holds at the place of a good record. Codes beyond the alphabet would
// index every score table beyond its end. The rest betrays a sequence file of another build: where the zero
// bytes are those of the index, and no others, identifiers, titles and letters are cut where that build cut
// them; codes may be zero, but no letter of an identifier passes for a code, and no residue for the pad
// before the first.
const char* fault_of_sequence(const SeqRec& s, int8_t pad, const BdbInfo& info, const ScoreMatrix& matrix) {
  if (!ends_at(s.id, s.ilen)) return "its identifier does not end with its first zero byte";
  if (!ends_at(s.title, s.tlen)) return "its title does not end with its first zero byte";
  if (info.index_flag != 1) {
    if (s.seq[0] != ' ') return "its residues do not begin with a blank, they may be codes";
    return ends_at(s.seq, s.len - 1) ? nullptr : "its residues do not end with their first zero byte";
  }
  if (s.seq[s.len - 1] != 0) return "its residues have no zero byte at their end";
  if (s.seq[0] != pad) return "its residues do not begin like those of the first sequence";
  uint8_t highest = 0;
  for (int32_t i = 0; i < s.len; ++i) highest = std::max(highest, static_cast<uint8_t>(s.seq[i]));
  return highest < matrix.inlen ? nullptr : "its residues are not all codes";
}

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
    end_damaged(p->BDB_SEQ_FILE, "it has %lld bytes, but its index file counts %d: they are of two builds",
                static_cast<long long>(size), info.totchar);
  }
  out_database.text = read_bulk(p->BDB_SEQ_FILE.stream, info.totchar);
  UTfileclose(p->BDB_SEQ_FILE, 1);
  show_time("loadbdb: read sequence database: ", p);
  if (out_database.text.size() < static_cast<std::size_t>(info.totchar)) {
    std::fprintf(std_err, "fread not read all binfo->totchar characters %d %d\n",
                 static_cast<int32_t>(out_database.text.size()), info.totchar);
  }
  progress("Now creating seqs array\n", p);
  out_database.seqs.resize(static_cast<std::size_t>(info.nseq));
  show_time("loadbdb: malloc'd seqs array: ", p);
  index_sequences(index, out_database, matrix, p);
  show_time("loadbdb indexed seqs array complete ", p);
  if (p->TIME > 5 && own_stopwatch) UT_reset_times();
}

}  // namespace zelvan
