#include "bdb/extraction.h"

#include "bdb/sequence_writer.h"
#include "bdb_data.h"

namespace {

std::string residues(int length) {
  return std::string(static_cast<std::size_t>(length), 'W');
}

class Extraction : public BinaryDatabaseTest {
 protected:
  // What one routine writes to std_out.
  template <class Routine>
  std::string report(Routine routine) {
    FILE* const usual = std_out;
    const std::string text = written([&](FILE* stream) {
      std_out = stream;
      routine();
    });
    std_out = usual;
    return text;
  }

  // A database s1 .. sn of 1 .. n residues, not in order of length.
  void write_ladder(int n) {
    std::string text;
    for (int k = 0; k < n; ++k) {
      const int length = (k * 7) % n + 1;
      text.append(">s").append(std::to_string(length)).append(" t\n").append(residues(length)).append("\n");
    }
    work.file("text", text);
  }
};

// Of FASTA records named s1, s2, ...: the numbers, each with a blank.
std::string numbers_of(const std::string& text) {
  std::string numbers;
  for (std::size_t at = text.find('>'); at != std::string::npos; at = text.find('>', at + 1)) {
    numbers += text.substr(at + 2, text.find(' ', at) - at - 1);
  }
  return numbers;
}

TEST_F(Extraction, SequencesFillLinesOf70) {
  const ScoreMatrix& scores = matrix();
  for (const int length : {0, 1, 69, 70, 71, 140, 141}) {
    std::string lines;
    for (int k = 1; k <= length; ++k) lines += k % 70 == 0 ? "W\n" : "W";
    std::string buffer = " " + residues(length);
    SeqRec record;
    record.id = "id";
    record.title = "a title";
    record.len = length + 2;
    record.seq = seqtoi(reinterpret_cast<int8_t*>(buffer.data()), record.len, scores);
    const std::string codes = buffer;
    for (const auto& [format, expected] :
         {std::pair(0, ">id\na title\n" + lines + "*\n"), std::pair(1, ">id a title\n" + lines + "\n"),
          std::pair(2, std::string()), std::pair(-1, std::string())}) {
      p.EXTRACT_SEQ_FORMAT = format;
      EXPECT_EQ(report([&] { save_sequence(std_out, record, scores, &p); }), expected);
    }
    EXPECT_EQ(buffer, codes) << "the codes stay";
  }
}

TEST_F(Extraction, TheBestOfASearchButTwo) {
  p.EXTRACT_SEQ_FORMAT = 1;
  const ScoreMatrix& scores = matrix();
  const struct {
    int32_t n, extract;
    const char* best;
  } cases[] = {{99, 5, "99 98 97 "}, {99, 3, "99 "},           {99, 2, ""}, {99, 1, ""},       {3, 4, "3 2 "},
               {3, 5, "3 2 1 "},     {3, INT32_MAX, "3 2 1 "}, {0, 5, ""},  {0, INT32_MAX, ""}};
  for (const auto& c : cases) {
    TextDatabase database;
    write_ladder(c.n);
    read_text_database(database, false, &p);
    encode_sequences(database.seqs.data(), c.n, scores);
    UTvector<int32_t> order = length_order(database.seqs);
    for (int32_t& number : order) --number;
    p.EXTRACT_SEQ = c.extract;
    extract_seqs(database.seqs.data(), c.n, order.data() + 1, scores, &p);
    EXPECT_EQ(numbers_of(file_content(work.at("extract"))), c.best) << c.n << " " << c.extract;
  }
  p.EXTRACT_FILE.name = work.at("none");
  p.EXTRACT_SEQ = 0;
  extract_seqs(nullptr, 0, nullptr, scores, &p);
  EXPECT_FALSE(std::filesystem::exists(work.at("none")));
}

TEST_F(Extraction, SubsetsAreEvenByLength) {
  const struct {
    int32_t n, subset;
    const char* lengths;
  } cases[] = {{10, 3, "10 7 4 "}, {10, 1, "10 "}, {10, 5, "10 8 6 4 2 "},
               {3, 3, "3 2 "},     {1, 1, ""},     {8, 8, "8 7 6 5 4 3 2 "}};
  for (const auto& c : cases) {
    write_ladder(c.n);
    p.NSUBSET = c.subset;
    EXPECT_EQ(numbers_of(report([&] { subset_db(&p); })), c.lengths) << c.n << " " << c.subset;
  }
  for (const int32_t refused : {INT32_MIN, -1, 0, 9, INT32_MAX}) {
    p.NSUBSET = refused;
    EXPECT_EXIT(subset_db(&p), testing::ExitedWithCode(255), "NSUBSET is " + std::to_string(refused));
  }
  p.NSUBSET = 1;
  work.file("text", "");
  EXPECT_EXIT(subset_db(&p), testing::ExitedWithCode(255), "has no sequence to choose from");
}

}  // namespace
