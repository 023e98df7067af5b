#include "seq/sequence_file.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cerrno>
#include <random>

#include "seq_data.h"
#include "support/capture.h"

namespace zelvan {
namespace {

using namespace std::string_literals;
using testing::ExitedWithCode;

constexpr int32_t PIR = 0;
constexpr int32_t FASTA = 1;

// Every record of a text, read through a buffer of the given size.
std::vector<Record> read_all(const std::string& text, int32_t format, std::size_t buffer_size = 1 << 18) {
  Params p = settings();
  p.DB_FORMAT = format;
  const TemporaryDirectory directory;
  FILE* const stream = std::fopen(directory.file("text", text).c_str(), "r");
  SeqReader reader = make_reader(stream, "text");
  reader.buffer.resize(buffer_size);
  SeqStore store;
  SeqRec record;
  std::vector<Record> records;
  while (get_db_seq(reader, store, record, &p)) records.push_back(texts_of(record));
  std::fclose(stream);
  return records;
}

TEST(SequenceFile, ReadsEveryShapeOfARecord) {
  const std::string strange =
      "Something strange with sequence identifier in fasta file: Invalid argument\nLine:";
  const std::string end = "The file is read up to this record only: write a name behind its \">\"\n";
  const std::string no_star = "End of file found before sequence terminating star: Success\nIDENT:";
  const std::string no_title = "End of file found before title line: Success\nIDENT:";
  const struct {
    int32_t format;
    std::string text;
    std::vector<Record> records;
    std::string report = "";
  } cases[] = {
      {FASTA, ">a\tb  c \nac-g*t 12.\tn\n\n", {{"a\tb", " c ", "ACGTN"}}},
      {FASTA, ">a\0\x62 \xff\xe9\nM\0\xffK\xc3\x84\n"s, {{"a\x1a\x62", "\xff\xe9", "MK"}}},
      {FASTA,
       ">a\nM\n>\nKK\n>b\nC\n",
       {{"a", "-", "M"}},
       strange + ">\nFile: text  Line: 3  Record: 2\n" + end},
      {FASTA, ">   \r\nKK\n", {}, strange + ">   \nFile: text  Line: 1  Record: 1\n" + end},
      {PIR,
       ">P1;ID x\nThe title \n MKV\nlla*\n>B\n\nA*\n",
       {{"P1;ID", "The title ", "MKVLLA"}, {"B", "", "A"}}},
      {PIR, ">a\nt\nMK*LL>c\n>b\r\nu\r\n*\r\n", {{"a", "t", "MK"}, {"b", "u", ""}}},
      {PIR, ">a\n>b\nM>K\n>L*", {{"a", ">b", "MKL"}}},
      {PIR, ">a\nt\nM*\n>b\nu\nKK\n", {{"a", "t", "M"}}, no_star + "b\n"},
      {PIR, ">a b\n", {}, no_title + "a\n"},
  };
  for (const auto& c : cases) {
    std::vector<Record> records;
    errno = 0;
    EXPECT_EQ(reported([&] { records = read_all(c.text, c.format); }), c.report);
    EXPECT_EQ(records, c.records) << c.text;
  }
}

// The definition, one byte after the other, for texts without zero bytes.
std::vector<Record> fasta_by_definition(const std::string& text) {
  std::vector<Record> records;
  std::size_t at = 0;
  const auto next_line = [&] {
    const std::size_t start = at;
    while (at < text.size() && text[at] != '\n') ++at;
    std::string line = text.substr(start, at - start);
    if (at < text.size()) ++at;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
  };
  while (at < text.size()) {
    const std::string line = next_line();
    if (line.empty() || line[0] != '>') continue;
    const std::size_t start = line.find_first_not_of(' ', 1);
    if (start == std::string::npos) break;
    const std::size_t blank = line.find(' ', start);
    Record r{line.substr(start, blank - start), "", ""};
    if (blank != std::string::npos) r.title = line.substr(blank + 1);
    if (r.title.empty()) r.title = "-";
    for (; at < text.size() && text[at] != '>'; ++at) {
      const auto byte = static_cast<unsigned char>(text[at]);
      if (byte < 128 && std::isalpha(byte)) r.residues += static_cast<char>(std::toupper(byte));
    }
    records.push_back(r);
  }
  return records;
}

TEST(SequenceFile, ReadsAnyTextThroughAnyBuffer) {
  std::mt19937 random(3);
  const std::string bytes = "AAbcZ@[`{>> \n\n\r0-*\xff";
  for (int round = 0; round < 400; ++round) {
    std::string text;
    for (std::size_t n = random() % 60; n > 0; --n) text += bytes[random() % bytes.size()];
    const std::size_t buffer_size = 1 + random() % 9;
    std::vector<Record> records;
    reported([&] { records = read_all(text, FASTA, buffer_size); });
    EXPECT_EQ(records, fasta_by_definition(text)) << text << " through " << buffer_size;
  }
}

TEST(SequenceFile, ResiduesOfADatabaseMustBeCountable) {
  TextDatabase database;
  database.nres = int64_t{INT32_MAX} + 1;
  const Params p = settings();
  EXPECT_EXIT(text_database_info(database, &p), ExitedWithCode(255),
              "^Too many residues in .*: 2147483648 \\(at most 2147483647\\)");
}

}  // namespace
}  // namespace zelvan
