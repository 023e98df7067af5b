#include "seq/sequence_file.h"

#include <gtest/gtest.h>

#include <cctype>
#include <random>

#include "seq_data.h"
#include "support/capture.h"

namespace zelvan {
namespace {

// Every record of a FASTA text, read through a buffer of the given size.
std::vector<Record> read_all(const std::string& text, std::size_t buffer_size) {
  const Params p = settings();
  const TemporaryDirectory directory;
  FILE* const stream = std::fopen(directory.file("text", text).c_str(), "r");
  SeqReader reader = make_reader(stream, "text");
  reader.buffer.resize(buffer_size);
  SeqStore store;
  SeqRec record;
  std::vector<Record> records;
  while (gseq_fasta(reader, store, record, &p)) records.push_back(texts_of(record));
  std::fclose(stream);
  return records;
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
    reported([&] { records = read_all(text, buffer_size); });
    EXPECT_EQ(records, fasta_by_definition(text)) << text << " through " << buffer_size;
  }
}

}  // namespace
}  // namespace zelvan
