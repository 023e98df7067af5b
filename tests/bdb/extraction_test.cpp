#include "bdb/extraction.h"

#include "bdb/sequence_writer.h"
#include "bdb_data.h"
#include "util/streams.h"

namespace {

class Extraction : public BinaryDatabaseTest {
 protected:
  // What one routine writes to std_out.
  template <class Routine>
  std::string report(Routine routine) {
    FILE* const usual = std_out;
    const std::string name = directory + "/report";
    std_out = std::fopen(name.c_str(), "w");
    routine();
    std::fclose(std_out);
    std_out = usual;
    return read_file(name);
  }

  // Sequences s1 .. sn of 1 .. n residues, not in order of length.
  static std::string ladder(int n) {
    std::string text;
    for (int k = 0; k < n; ++k) {
      const int length = (k * 7) % n + 1;
      text +=
          ">s" + std::to_string(length) + " t\n" + std::string(static_cast<std::size_t>(length), 'W') + "\n";
    }
    return text;
  }

  std::string extracted() const { return read_file(path(p.EXTRACT_FILE.name)); }
};

TEST_F(Extraction, SequencesFillLinesOf70) {
  struct Case {
    int32_t length;
    std::string lines;
  };
  const std::string line(70, 'W');
  const std::vector<Case> cases = {{0, ""},           {1, "W"},           {69, std::string(69, 'W')},
                                   {70, line + "\n"}, {71, line + "\nW"}, {140, line + "\n" + line + "\n"}};
  p.MATRIX_FILE.name = "BLOSUM62";
  const ScoreMatrix& matrix = *getmat(&p);
  for (const Case& c : cases) {
    std::string residues = " " + std::string(static_cast<std::size_t>(c.length), 'W');
    SeqRec record;
    record.id = "id";
    record.title = "a title";
    record.len = c.length + 2;
    record.seq = seqtoi(reinterpret_cast<int8_t*>(residues.data()), record.len, matrix);
    const std::string codes = residues;
    const std::string pir = ">id\na title\n" + c.lines + "*\n";
    const std::string fasta = ">id a title\n" + c.lines + "\n";
    EXPECT_EQ(report([&] { SavePirSeq(std_out, record, matrix); }), pir);
    EXPECT_EQ(report([&] { SaveFastaSeq(std_out, record, matrix); }), fasta);
    for (const int32_t format : {-1, 0, 1, 2}) {
      p.EXTRACT_SEQ_FORMAT = format;
      EXPECT_EQ(report([&] { save_sequence(std_out, record, matrix, &p); }),
                format == 0 ? pir : (format == 1 ? fasta : ""));
    }
    EXPECT_EQ(residues, codes) << "the codes stay";
  }
}

TEST_F(Extraction, TheBestOfASearchButTwo) {
  struct Case {
    int32_t n, extract;
    std::string ids;
  };
  const std::vector<Case> cases = {{100, 5, ">s100 >s99 >s98 "},
                                   {100, 3, ">s100 "},
                                   {100, 2, ""},
                                   {100, 1, ""},
                                   {3, 4, ">s3 >s2 "},
                                   {3, 5, ">s3 >s2 >s1 "},
                                   {3, INT32_MAX, ">s3 >s2 >s1 "},
                                   {0, 5, ""},
                                   {0, INT32_MAX, ""}};
  p.MATRIX_FILE.name = "BLOSUM62";
  p.EXTRACT_SEQ_FORMAT = 1;
  const ScoreMatrix& matrix = *getmat(&p);
  for (const Case& c : cases) {
    TextDatabase database;
    write_file(path(p.DB_FILE.name), ladder(c.n));
    read_text_database(database, false, &p);
    encode_sequences(database.seqs.data(), c.n, matrix);
    UTvector<int32_t> order = length_order(database.seqs);
    for (int32_t& number : order) --number;
    p.EXTRACT_SEQ = c.extract;
    extract_seqs(database.seqs.data(), c.n, order.data() + 1, matrix, &p);
    std::string ids;
    const std::string text = extracted();
    for (std::size_t at = text.find('>'); at != std::string::npos; at = text.find('>', at + 1)) {
      ids += text.substr(at, text.find(' ', at) + 1 - at);
    }
    EXPECT_EQ(ids, c.ids) << c.n << " " << c.extract;
  }
  std::filesystem::remove(path(p.EXTRACT_FILE.name));
  p.EXTRACT_SEQ = 0;
  extract_seqs(nullptr, 0, nullptr, matrix, &p);
  EXPECT_FALSE(std::filesystem::exists(path(p.EXTRACT_FILE.name)));
}

TEST_F(Extraction, SubsetsAreEvenByLength) {
  struct Case {
    int n;
    int32_t subset;
    std::vector<int> lengths;
  };
  const std::vector<Case> cases = {
      {10, 3, {10, 7, 4}}, {10, 1, {10}}, {10, 5, {10, 8, 6, 4, 2}},
      {3, 3, {3, 2}},      {1, 1, {}},    {10, 10, {10, 9, 8, 7, 6, 5, 4, 3, 2}}};
  for (const Case& c : cases) {
    write_file(path(p.DB_FILE.name), ladder(c.n));
    p.NSUBSET = c.subset;
    std::string expected;
    for (const int length : c.lengths) {
      expected +=
          ">s" + std::to_string(length) + " t\n" + std::string(static_cast<std::size_t>(length), 'W') + "\n";
    }
    EXPECT_EQ(report([&] { subset_db(&p); }), expected) << c.n << " " << c.subset;
  }
  for (const int32_t refused : {INT32_MIN, -1, 0, 11, INT32_MAX}) {
    write_file(path(p.DB_FILE.name), ladder(10));
    p.NSUBSET = refused;
    EXPECT_EXIT(subset_db(&p), testing::ExitedWithCode(255), "NSUBSET is " + std::to_string(refused));
  }
}

}  // namespace
