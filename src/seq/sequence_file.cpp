#include "seq/sequence_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "driver/search_mode.h"
#include "seq/size_limit.h"
#include "util/buffer_sizes.h"
#include "util/failure.h"
#include "util/line_reader.h"
#include "util/streams.h"
#include "util/text_start.h"

namespace zelvan {
namespace {

constexpr std::size_t MAX_LINE = INT32_MAX - 1;  // identifier and title lengths are 32-bit numbers

// Byte to residue: upper-case letter, or 0 for what is skipped. ASCII only, whatever the locale.
constexpr std::array<char, 256> RESIDUES = [] {
  std::array<char, 256> table{};
  for (unsigned char upper = 'A'; upper <= 'Z'; ++upper) {
    table[upper] = static_cast<char>(upper);
    table[upper + 32U] = static_cast<char>(upper);
  }
  return table;
}();

// In the bytes of the buffer that were read.
int64_t newlines(const SeqReader& reader) {
  return std::count(reader.buffer.data(), reader.buffer.data() + reader.at, '\n');
}

// Before a fault ends the run: the caller may owe something to the records before it.
void finish_records(const SeqReader& reader) {
  if (reader.before_end) reader.before_end();
}

// Makes unread bytes available; false at the end of the file. A record that a failing disk cuts short must
// not pass for a whole one.
bool fill(SeqReader& reader) {
  if (reader.at < reader.end) return true;
  reader.lines_before += newlines(reader);
  reader.at = 0;
  reader.end = std::fread(reader.buffer.data(), 1, reader.buffer.size(), reader.stream);
  if (std::ferror(reader.stream) != 0) {
    const int number = errno;
    finish_records(reader);
    UTend_input(std_err, "Error reading sequence file %s: %s\n", reader.name, std::strerror(number));
  }
  return reader.end > 0;
}

// The bytes from reader.at up to the mark, or up to the end of the buffer when it holds none.
struct Chunk {
  const char* bytes;
  std::size_t size;
  bool marked;  // the mark follows
};

Chunk chunk_to(const SeqReader& reader, char mark) {
  const char* const bytes = reader.buffer.data() + reader.at;
  const std::size_t size = reader.end - reader.at;
  const auto* const found = static_cast<const char*>(std::memchr(bytes, mark, size));
  if (found == nullptr) return {bytes, size, false};
  return {bytes, static_cast<std::size_t>(found - bytes), true};
}

void skip_line(SeqReader& reader) {
  while (fill(reader)) {
    const Chunk chunk = chunk_to(reader, '\n');
    reader.at += chunk.size;
    if (chunk.marked) {
      ++reader.at;
      return;
    }
  }
}

// Reads the rest of the current line, whole; false at the end of the file.
// Out    line: zero-terminated, without newline and a carriage return before it
bool read_line(SeqReader& reader, UTvector<char>& line) {
  line.clear();
  if (!fill(reader)) return false;
  bool complete = false;
  while (!complete && fill(reader)) {
    const Chunk chunk = chunk_to(reader, '\n');
    if (chunk.size > MAX_LINE - line.size()) {
      finish_records(reader);
      UTend_input(std_err, "Line too long in sequence file %s (> %zu characters): %.60s...\n", reader.name,
                  MAX_LINE, line.data());
    }
    line.insert(line.end(), chunk.bytes, chunk.bytes + chunk.size);
    complete = chunk.marked;
    reader.at += chunk.size + (complete ? 1 : 0);
  }
  reader.line_ended = complete;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  std::replace(line.begin(), line.end(), '\0', ZERO_BYTE_STAND_IN);
  line.push_back('\0');
  return true;
}

// Reads the next line that begins with ">" into reader.line.
bool read_header(SeqReader& reader) {
  while (fill(reader)) {
    if (reader.buffer[reader.at] == '>') {
      ++reader.records;
      return read_line(reader, reader.line);
    }
    skip_line(reader);
  }
  return false;
}

// A part of a header line.
struct Field {
  const char* text;
  std::size_t size;
};

// The first word after the ">"; empty when there is none.
Field identifier_of(const UTvector<char>& line) {
  const char* const text = line.data() + 1 + std::strspn(line.data() + 1, " ");
  return {text, std::strcspn(text, " ")};
}

// Appends the residues among the bytes to reader.residues at position nres; returns the new number.
std::size_t append_residues(SeqReader& reader, std::size_t nres, const Chunk& chunk) {
  if (reader.residues.size() < nres + chunk.size) {
    reader.residues.resize(std::max(nres + chunk.size, 2 * reader.residues.size()));
  }
  // Every byte is written, and the place moves on only behind a residue: no branch on the data.
  char* to = reader.residues.data() + nres;
  for (std::size_t i = 0; i < chunk.size; ++i) {
    const char residue = RESIDUES[static_cast<unsigned char>(chunk.bytes[i])];
    *to = residue;
    to += residue != 0;
  }
  return static_cast<std::size_t>(to - reader.residues.data());
}

// Reads residues up to the mark, which stays unread.
// Out    reader.residues[0..out_nres-1]
// Returns false when the file ends before the mark
bool read_residues(SeqReader& reader, char mark, const Field& id, int32_t& out_nres, const Params* p) {
  const int64_t limit = int64_t{p->MAX_SEQ_LEN} - 3;
  std::size_t nres = 0;
  bool marked = false;
  while (!marked && fill(reader)) {
    const Chunk chunk = chunk_to(reader, mark);
    marked = chunk.marked;
    nres = append_residues(reader, nres, chunk);
    reader.at += chunk.size;
    if (nres > 0 && static_cast<int64_t>(nres) >= limit) {
      finish_records(reader);
      UTend_input(std_err, "Sequence too long: %.*s (> %lld residues):  Increase MAX_SEQ_LEN\n",
                  static_cast<int>(id.size), id.text, static_cast<long long>(limit));
    }
  }
  out_nres = static_cast<int32_t>(nres);
  return marked;
}

SeqRec store_record(SeqStore& store, const SeqReader& reader, const Field& id, const Field& title,
                    int32_t nres) {
  return store_sequence(store, id.text, static_cast<int32_t>(id.size), title.text,
                        static_cast<int32_t>(title.size), reader.residues.data(), nres);
}

// Reads a record in the given layout (0 PIR, 1 FASTA).
bool read_record(SeqReader& reader, SeqStore& store, SeqRec& out_record, int32_t format, const Params* p) {
  return format == 0 ? gseq_pir(reader, store, out_record, p) : gseq_fasta(reader, store, out_record, p);
}

// Opens a file of sequences for reading, `no_file` being said first when nobody named the one that is
// missing. A file that may hold text is read from behind its byte-order mark.
SeqReader open_sequences(FileRec& file, const char* no_file, const char* how) {
  UTfileopen(file, "r", 0);
  if (file.stream == nullptr) {
    if (!file.given) std::fputs(no_file, std_err);
    UTfileopen(file, "r", 1);
  }
  SeqReader reader = make_reader(file.stream, file.name.c_str());
  fill(reader);
  UTrefuse_compressed(reader.buffer.data(), reader.end, reader.name, how);
  reader.at = UTmark_length(reader.buffer.data(), reader.end);
  return reader;
}

[[noreturn]] void end_too_large(const Params* p) {
  const bool search = decode_mode(p->MODE).comparison != Comparison::NONE;
  std::fprintf(
      std_err,
      "%s has more than %lld residues, too many to read them as a text. Build a binary database, which "
      "may have any size, and use that:\nzelvan -mode 99 -d %s -bdb NAME\n",
      p->DB_FILE.name.c_str(), static_cast<long long>(most_characters()), p->DB_FILE.name.c_str());
  if (search) std::fprintf(std_err, "zelvan -s %s -bdb NAME", p->QSEQ_FILE.name.c_str());
  UTend_input(std_err, "%s -mode %d\n", search ? "" : "zelvan -bdb NAME", p->MODE);
}

[[noreturn]] void unsupported_format(const Params* p) {
  UTend_input(p->STDERR, "Format:%d is not supported\n", p->QSEQ_FORMAT);
}

}  // namespace

SeqReader make_reader(FILE* stream, const char* name) {
  SeqReader reader;
  reader.stream = stream;
  reader.name = name;
  reader.buffer.resize(READ_BUFFER_SIZE);
  return reader;
}

bool gseq_fasta(SeqReader& reader, SeqStore& store, SeqRec& out_record, const Params* p) {
  if (!read_header(reader)) return false;
  const char* const line = reader.line.data();
  const Field id = identifier_of(reader.line);
  if (id.size == 0) {
    errno = EINVAL;
    error("Something strange with sequence identifier in fasta file", 0);
    const int64_t number = reader.lines_before + newlines(reader) + (reader.line_ended ? 0 : 1);
    std::fprintf(std_err,
                 "Line:%s\n"
                 "File: %s  Line: %lld  Record: %lld\n"
                 "The file is read up to this record only: write a name behind its \">\"\n",
                 line, reader.name, static_cast<long long>(number), static_cast<long long>(reader.records));
    reader.unnamed = true;
    return false;
  }
  const char* const id_end = id.text + id.size;
  Field title = {id_end, 0};
  if (*id_end == ' ') title = {id_end + 1, std::strlen(id_end + 1)};
  if (title.size == 0) {
    if (p->VERBOSE > 10) {
      std::fprintf(std_err, "Title missing in FASTA file - Inserting dummy: %s\n", line);
    }
    title = {"-", 1};
  }
  int32_t nres = 0;
  read_residues(reader, '>', id, nres, p);
  out_record = store_record(store, reader, id, title, nres);
  return true;
}

bool gseq_pir(SeqReader& reader, SeqStore& store, SeqRec& out_record, const Params* p) {
  if (!read_header(reader)) return false;
  const Field id = identifier_of(reader.line);
  const auto fail = [&id](const char* message) {
    error(message, 0);
    std::fprintf(std_err, "IDENT:%.*s\n", static_cast<int>(id.size), id.text);
    return false;
  };
  if (!read_line(reader, reader.title)) return fail("End of file found before title line");
  int32_t nres = 0;
  if (!read_residues(reader, '*', id, nres, p)) {
    return fail("End of file found before sequence terminating star");
  }
  ++reader.at;  // the star
  out_record = store_record(store, reader, id, {reader.title.data(), reader.title.size() - 1}, nres);
  return true;
}

SeqRec get_query_seq(SeqStore& store, Params* p) {
  if (p->VERBOSE != 0) std::fputs("Getting query sequence and converting to integer\n", std_err);
  SeqReader reader =
      open_sequences(p->QSEQ_FILE, "No query was given: add -s FILE\n", "| zelvan -s /dev/stdin ...");
  if (p->QSEQ_FORMAT != 0 && p->QSEQ_FORMAT != 1) unsupported_format(p);
  SeqRec query;
  if (!read_record(reader, store, query, p->QSEQ_FORMAT, p)) UTend_input(std_err, "No Query\n");
  if (query.len > MP_LEN) {
    UTend_input(p->STDERR,
                "Error:  Sequence length (%d) is > MP_LEN (%d)\n"
                "You must recompile ZELVAN with MP_LEN set > %d\n"
                "Alternatively, use ZELVAN compiled for a single processor\n"
                "i.e. with MP_LEN undefined in the makefile\n",
                query.len, MP_LEN, query.len);
  }
  return query;
}

bool get_db_seq(SeqReader& reader, SeqStore& store, SeqRec& out_record, const Params* p) {
  if (p->DB_FORMAT != 0 && p->DB_FORMAT != 1) unsupported_format(p);
  return read_record(reader, store, out_record, p->DB_FORMAT, p);
}

SeqReader open_text_database(Params* p) {
  return open_sequences(p->DB_FILE,
                        reads_text_only(p->MODE)
                            ? "No database was given: add -d FILE\n"
                            : "No database was given: add -d FILE, or -bdb NAME for a binary one\n",
                        "| zelvan -d /dev/stdin ...");
}

void read_text_database(TextDatabase& out_database, bool progress, Params* p) {
  if (progress) std::fputs("Opening database\n", std_err);
  SeqReader reader = open_text_database(p);
  if (progress) std::fputs("Loading database\n", std_err);
  SeqRec record;
  while (get_db_seq(reader, out_database.store, record, p)) {
    if (static_cast<int64_t>(out_database.seqs.size()) >= p->MAX_NSEQ) {
      end_too_many(p);
    }
    out_database.seqs.push_back(record);
    out_database.nres += residues(record);
    if (out_database.nres > most_characters() && !reads_text_only(p->MODE)) end_too_large(p);
  }
  out_database.cut_short = reader.unnamed;
  UTfileclose(p->DB_FILE, 0);
}

void end_too_many(const Params* p) {
  UTend_input(std_err, "Too many sequences in %s (> %d):  Increase MAX_NSEQ\n", p->DB_FILE.name.c_str(),
              p->MAX_NSEQ);
}

void require_whole(const TextDatabase& database, const Params* p) {
  if (!database.cut_short) return;
  UTend_input(std_err, "Nothing was written: %s could not be read to its end\n", p->DB_FILE.name.c_str());
}

BdbInfo text_database_info(const TextDatabase& database) {
  BdbInfo info;
  info.nseq = static_cast<int32_t>(database.seqs.size());
  info.nres = database.nres;
  info.totchar = info.nres;
  return info;
}

}  // namespace zelvan
