#include "bdb/index_reader.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>

#include "util/streams.h"

namespace zelvan {
namespace {

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

bool ends_at(const void* text, int32_t length) {
  return std::memchr(text, 0, static_cast<std::size_t>(length) + 1) ==
         static_cast<const char*>(text) + length;
}

}  // namespace

void end_damaged(const FileRec& file, const char* format, ...) {
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

UTbuffer<char> read_bulk(FILE* stream, int64_t most) {
  UTbuffer<char> bytes(static_cast<std::size_t>(std::min(most, bytes_of(stream))));
  UTlarge_pages(bytes.data(), bytes.size());
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), stream));
  return bytes;
}

void take(IndexBytes& index, void* out_bytes, std::size_t size, const char* field) {
  if (size > index.left) end_damaged(index.file, "it ends before the end of %s", field);
  std::memcpy(out_bytes, index.at, size);
  index.at += size;
  index.left -= size;
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
  std::fprintf(std_err, "\nNumber of sequences in database: %d\nNumber of residues in database: %lld\n",
               info.nseq, static_cast<long long>(info.nres));
  std::fprintf(std_err, "Total characters in database: %lld\n\n", static_cast<long long>(info.totchar));
  std::fprintf(std_err, "Length of date string: %d\nDatabase created on: %s", info.date_length,
               info.date.c_str());
  std::fprintf(std_err, "Length of name string: %d\nFrom: %s\n", info.name_length, info.name.c_str());
}

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

// Codes beyond the alphabet would
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

}  // namespace zelvan
