#include "seq/sequence_file.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cerrno>
#include <climits>
#include <random>

#include "seq_data.h"
#include "support/capture.h"

namespace {

using namespace std::string_literals;

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

struct Layout {
  const char* what;
  std::string text;
  std::vector<Record> records;
  std::string report;  // on std_err, empty: none
};

void check(const std::vector<Layout>& cases, int32_t format) {
  for (const Layout& c : cases) {
    SCOPED_TRACE(c.what);
    std::vector<Record> records;
    errno = 0;
    EXPECT_EQ(reported([&] { records = read_all(c.text, format); }), c.report);
    EXPECT_EQ(records, c.records);
  }
}

TEST(GseqFasta, ReadsEveryShapeOfARecord) {
  const std::string strange = "Something strange with sequence identifier in fasta file: Success\n";
  check({{"nothing", "", {}, ""},
         {"no record", "MKV\nAAA >x\n", {}, ""},
         {"plain", ">ID a title\nMKV\nLLA\n>B\nA\n", {{"ID", "a title", "MKVLLA"}, {"B", "-", "A"}}, ""},
         {"lines before the first record", "# made by hand\n\n MKV\n>a b\nC\n", {{"a", "b", "C"}}, ""},
         {"only letters count", ">abc\nac-g*t 12.\tn\n\n", {{"abc", "-", "ACGTN"}}, ""},
         {"blanks of the title", ">a  b  c \nM\n", {{"a", " b  c ", "M"}}, ""},
         {"blank behind the identifier", ">a \nM\n>  b\nK\n", {{"a", "-", "M"}, {"b", "-", "K"}}, ""},
         {"tab", ">a\tb c\nM\n", {{"a\tb", "c", "M"}}, ""},
         {"line ends of Windows", ">a b\r\nMK\r\nV\r\n>c\r\n\r\n", {{"a", "b", "MKV"}, {"c", "-", ""}}, ""},
         {"no line end at the end", ">a b\nMK", {{"a", "b", "MK"}}, ""},
         {"header only", ">a b", {{"a", "b", ""}}, ""},
         {"carriage return at the end", ">a\r", {{"a", "-", ""}}, ""},
         {"empty records", ">a\n>b x\n\n>c\n", {{"a", "-", ""}, {"b", "x", ""}, {"c", "-", ""}}, ""},
         {"mark inside a line", ">a b\nMK>V c\nL\n", {{"a", "b", "MK"}, {"V", "c", "L"}}, ""},
         {"mark inside a header", ">a >b\nMK\n", {{"a", ">b", "MK"}}, ""},
         {"bytes that are no text",
          ">a\0b \xff\xe9\nM\0\xffK\xc3\x84\n"s,
          {{"a\x1a"
            "b",
            "\xff\xe9", "MK"}},
          ""},
         {"no identifier", ">a\nM\n>\nKK\n>b\nC\n", {{"a", "-", "M"}}, strange + "Line:>\n"},
         {"blanks only", ">   \r\nKK\n", {}, strange + "Line:>   \n"}},
        FASTA);
}

TEST(GseqPir, ReadsEveryShapeOfARecord) {
  const std::string no_star = "End of file found before sequence terminating star: Success\nIDENT:";
  const std::string no_title = "End of file found before title line: Success\nIDENT:";
  check({{"nothing", "\n\n", {}, ""},
         {"plain",
          ">P1;ID x\nThe title \n MKV\nlla*\n>B\n\nA*\n",
          {{"P1;ID", "The title ", "MKVLLA"}, {"B", "", "A"}},
          ""},
         {"rest of the star's line", ">a\nt\nMK*LL>c\n>b\nu\n*\n", {{"a", "t", "MK"}, {"b", "u", ""}}, ""},
         {"line ends of Windows", ">a\r\nt\r\nMK\r\n*\r\n", {{"a", "t", "MK"}}, ""},
         {"title like a header", ">a\n>b\nM*", {{"a", ">b", "M"}}, ""},
         {"mark among the residues", ">a\nt\nM>K\n>L*\n", {{"a", "t", "MKL"}}, ""},
         {"star missing", ">a\nt\nM*\n>b\nu\nKK\n", {{"a", "t", "M"}}, no_star + "b\n"},
         {"no residues, no star", ">a\nt\n", {}, no_star + "a\n"},
         {"title missing", ">a b\n", {}, no_title + "a\n"}},
        PIR);
}

TEST(GseqFasta, TellsOfMissingTitlesWhenAsked) {
  Params p = settings();
  p.VERBOSE = 11;
  char text[] = ">id \nM\n";
  FILE* const stream = fmemopen(text, sizeof text - 1, "r");
  SeqReader reader = make_reader(stream, "text");
  SeqStore store;
  SeqRec record;
  EXPECT_EQ(reported([&] { EXPECT_TRUE(gseq_fasta(reader, store, record, &p)); }),
            "Title missing in FASTA file - Inserting dummy: >id \n");
  std::fclose(stream);
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

TEST(GseqFasta, ReadsAnyTextThroughAnyBuffer) {
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

TEST(GseqFasta, KeepsLongLinesWhole) {
  const std::string id(1'000'000, 'i');
  const std::string title = "t " + std::string(1'000'000, 't');
  const std::string residues(700'000, 'M');
  EXPECT_TRUE((read_all(">" + id + " " + title + "\n" + residues + "\n>b\nK\n", FASTA) ==
               std::vector<Record>{{id, title, residues}, {"b", "-", "K"}}));
  EXPECT_TRUE((read_all(">" + id + "\n" + title + "\n" + residues + "*\n", PIR) ==
               std::vector<Record>{{id, title, residues}}));
}

struct QueryTest : testing::Test {
  TemporaryDirectory directory;
  SeqStore store;
  Params p = settings();

  SeqRec query(const std::string& text) {
    p.QSEQ_FILE.name = directory.file("query", text);
    return get_query_seq(store, &p);
  }
  ~QueryTest() override {
    if (p.QSEQ_FILE.stream != nullptr) std::fclose(p.QSEQ_FILE.stream);
  }
};

TEST_F(QueryTest, TakesTheFirstRecordAndLeavesTheFileOpen) {
  p.VERBOSE = 1;
  EXPECT_EQ(reported([&] {
              EXPECT_EQ(texts_of(query(">q x\nMKV\n>r\nA\n")), (Record{"q", "x", "MKV"}));
            }),
            "Getting query sequence and converting to integer\n");
  EXPECT_NE(p.QSEQ_FILE.stream, nullptr);
}

TEST_F(QueryTest, HoldsSequencesBelowTheLimitOfLength) {
  const struct {
    int32_t max_seq_len;
    std::size_t nres;
    const char* printed;  // the limit in the message; null: accepted
  } cases[] = {{10, 6, nullptr},      {10, 7, "7"},    {10, 9, "7"},     {5, 1, nullptr},
               {5, 2, "2"},           {4, 0, nullptr}, {4, 1, "1"},      {3, 0, nullptr},
               {3, 1, "0"},           {0, 1, "-3"},    {-5, 0, nullptr}, {INT_MIN, 1, "-2147483651"},
               {INT_MAX, 50, nullptr}};
  for (const auto& c : cases) {
    p.MAX_SEQ_LEN = c.max_seq_len;
    const std::string text = ">seq x\n" + std::string(c.nres, 'A') + "\n";
    if (c.printed == nullptr) {
      EXPECT_EQ(query(text).len, static_cast<int32_t>(c.nres) + 2) << c.max_seq_len;
      std::fclose(p.QSEQ_FILE.stream);
      p.QSEQ_FILE.stream = nullptr;
    } else {
      EXPECT_EXIT(query(text), testing::ExitedWithCode(255),
                  "^Sequence too long: seq \\(> "s + c.printed + " residues\\):  Increase MAX_SEQ_LEN\n$");
    }
  }
}

TEST_F(QueryTest, EndsOnQueriesThatTheKernelsCannotHold) {
  EXPECT_EQ(query(">q\n" + std::string(15'998, 'A')).len, MP_LEN);
  EXPECT_EXIT(query(">q\n" + std::string(15'999, 'A')), testing::ExitedWithCode(255),
              "^Error:  Sequence length \\(16001\\) is > MP_LEN \\(16000\\)\n"
              "You must recompile ZELVAN with MP_LEN set > 16001\n"
              "Alternatively, use ZELVAN compiled for a single processor\n"
              "i.e. with MP_LEN undefined in the makefile\n$");
}

TEST_F(QueryTest, EndsOnWhatIsNoQuery) {
  EXPECT_EXIT(query("\0\x01\x02garbage\xff"s), testing::ExitedWithCode(255), "^No Query\n$");
  EXPECT_EXIT(query(">\nMKV\n"), testing::ExitedWithCode(255), "strange(.|\n)*Line:>\nNo Query\n$");
  p.QSEQ_FORMAT = 2;
  EXPECT_EXIT(query(">q\nMKV\n"), testing::ExitedWithCode(255), "^Format:2 is not supported\n$");
  p.QSEQ_FILE.name = directory.at("missing");
  EXPECT_EXIT(get_query_seq(store, &p), testing::ExitedWithCode(255),
              "^Error opening File: No such file or directory\n.*missing\n$");
  p.QSEQ_FILE.name = directory.path.string();
  EXPECT_EXIT(get_query_seq(store, &p), testing::ExitedWithCode(255),
              "^Error opening File: Is a directory\n");
}

TEST(GetDbSeq, RefusesOtherFormatsUnderTheQuerysKey) {
  Params p = settings();
  p.DB_FORMAT = 2;
  SeqReader reader;
  SeqStore store;
  SeqRec record;
  EXPECT_EXIT(get_db_seq(reader, store, record, &p), testing::ExitedWithCode(255),
              "^Format:1 is not supported\n$");
}

TEST(GetDbSeq, EndsWhenReadingFails) {
  const Params p = settings();
  const TemporaryDirectory directory;
  FILE* const stream = std::fopen(directory.path.c_str(), "r");  // opens, but cannot be read
  SeqReader reader = make_reader(stream, "the database");
  SeqStore store;
  SeqRec record;
  EXPECT_EXIT(get_db_seq(reader, store, record, &p), testing::ExitedWithCode(255),
              "^Error reading sequence file the database: Is a directory\n$");
  std::fclose(stream);
}

TEST(ReadTextDatabase, ReadsTheWholeFile) {
  const TemporaryDirectory directory;
  Params p = settings();
  p.MAX_NSEQ = 3;
  p.DB_FILE.name = directory.file("db", ">a\nMKV\n>b\n>c\nAA\n");
  for (const bool progress : {false, true}) {
    TextDatabase database;
    EXPECT_EQ(reported([&] { read_text_database(database, progress, &p); }),
              progress ? "Opening database\nLoading database\n" : "");
    ASSERT_EQ(database.seqs.size(), 3u);
    EXPECT_EQ(texts_of(database.seqs[2]), (Record{"c", "-", "AA"}));
    EXPECT_EQ(p.DB_FILE.stream, nullptr);
    const BdbInfo info = text_database_info(database, &p);
    EXPECT_EQ(info.nseq, 3);
    EXPECT_EQ(info.nres, 5);
    EXPECT_EQ(info.totchar, 5);
  }
}

TEST(ReadTextDatabase, EndsOnTooMuch) {
  const TemporaryDirectory directory;
  Params p = settings();
  p.DB_FILE.name = directory.file("db", ">a\nM\n>b\nK\n");
  TextDatabase database;
  for (const int32_t limit : {1, 0, -1}) {
    p.MAX_NSEQ = limit;
    EXPECT_EXIT(read_text_database(database, false, &p), testing::ExitedWithCode(255),
                "^Too many sequences in .*db \\(> " + std::to_string(limit) + "\\):  Increase MAX_NSEQ\n$");
  }
  database.nres = INT32_MAX;
  EXPECT_EQ(text_database_info(database, &p).nres, INT32_MAX);
  ++database.nres;
  EXPECT_EXIT(text_database_info(database, &p), testing::ExitedWithCode(255),
              "^Too many residues in .*db: 2147483648 \\(at most 2147483647\\)");
}

}  // namespace
