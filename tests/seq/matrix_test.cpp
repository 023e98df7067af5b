#include "seq/matrix.h"

#include <gtest/gtest.h>

#include "seq/composition.h"
#include "seq/database_info.h"
#include "seq_data.h"
#include "support/capture.h"

namespace zelvan {
namespace {

using testing::ExitedWithCode;

constexpr int32_t PIR = 0;
constexpr int32_t NCBI = 1;

struct MatrixTest : testing::Test {
  TemporaryDirectory directory;
  Params p = settings();

  MatrixTest() { p.MATRIX_DIR = directory.path.c_str(); }
  ScoreMatrix& load(const std::string& text, int32_t format) {
    directory.file("m", text);
    p.MATRIX_FILE.name = "m";
    p.MATRIX_FORMAT = format;
    return *getmat(&p);
  }
};

TEST_F(MatrixTest, ReadsThePlainLayout) {
  const ScoreMatrix& m = load("A title\nAXC\n 1 -2\n3\t4 5 6 -7 8\r\n9 rest\n", PIR);
  EXPECT_EQ(m.title, "A title");
  EXPECT_EQ(m.indx, "AXC ^:!");
  EXPECT_EQ(m.inlen, 7);
  const int32_t expected[3][3] = {{100, -200, 300}, {400, 500, 600}, {-700, 800, 900}};
  for (int32_t i = 0; i < 7; ++i) {
    for (int32_t j = 0; j < 7; ++j) {
      const int32_t special = i == 6 || j == 6 ? -3000 : 0;
      EXPECT_EQ(m.pairscore[i][j], i < 3 && j < 3 ? expected[i][j] : special) << i << " " << j;
    }
  }
  EXPECT_EQ(m.minval, -3000);
  EXPECT_EQ(m.maxval, 900);
  const std::string text = written([&](FILE* stream) { PrintPairscoreMatrix(stream, m, &p); });
  EXPECT_EQ(count_of(text, "#A    1  -2   3   0   0   0 -30\n"), 1) << text;
}

TEST_F(MatrixTest, ReadsTheNcbiLayout) {
  const ScoreMatrix& m =
      load("# one\r\nA 1 2 3\n\n# two\n  A  X\t* \r\nQ 1 -2 -9\r\nwhatever\t3 x 7\n* -9 -9 1\njunk", NCBI);
  EXPECT_EQ(m.title, "NCBI Matrix - see file for type");
  EXPECT_EQ(m.indx, "AX ^:!");
  EXPECT_EQ(m.pairscore[0][0], 100);
  EXPECT_EQ(m.pairscore[0][1], -200);
  EXPECT_EQ(m.pairscore[1][0], 300);
  EXPECT_EQ(m.pairscore[1][1], 0) << "not a number";
}

// The sentences end the run with status -1; "~" stands for the matrix file.
TEST_F(MatrixTest, EndsOnFaultyFiles) {
  const std::string ask =
      "Matrix file: ~\nFor an NCBI format matrix file I expect a # in the first column of the first line\n"
      "Are you sure this file is NCBI format\\?\\?\\?\nLook at MATRIX_FILE command\n";
  const std::string no_x = "Pairscore Matrix MUST include an X character\nIndex:";
  const std::string most(124, 'X');
  const struct {
    int32_t format;
    std::string text, sentence;
  } cases[] = {
      {PIR, "", "Missing Title line in matrix file: .*\nFile:~\n"},
      {PIR, "title\n", "Missing index line in matrix file: .*\nFile:~\n"},
      {PIR, "# 1\nX\n1\n",
       "Matrix file: ~\nThis does not look like a PIR format matrix file\n"
       "I don't expect to see a # in the first column\n"
       "Are you sure it is not an NCBI format file\\?\\?\\?\nIf it is NCBI, then set MATRIX_TYPE to 1\n"},
      {PIR, "t\nAB\n1 2 3 4\n", no_x + "AB \\^:!\n"},
      {PIR, "t\nAX\n1 2 3\n", "Too few scores in matrix file: ~\nRow 2, column 2 of 2 .*\n"},
      {PIR, "t\nX\n-21474837\n", "Score out of range in matrix file: ~\nNo score x PRECISION .*\n"},
      {PIR, "t\nX" + most + "\n1\n", "Matrix file: ~\nToo many residue letters: 125 \\(at most 124\\)\n"},
      {PIR, "t\nX\xe4\n1\n", "Matrix file: ~\nUnusable character \\(byte 228\\) .*\n.*\n"},
      {NCBI, " X\nX 1\n", ask},
      {NCBI, "# c\nX Y\n", "Matrix file: ~\nNo line of residue letters found: .*\n"},
      {NCBI, "# c\n  A *\nA 1\n", no_x + "A \\^:!\n"},
      {NCBI, "# c\n  A X\nA 1\nX 1 1\n", "Too few scores in matrix file: ~\nRow 1 has 1 of 2\n"},
      {2, "# c\n X\nX 1\n", "ERROR: Unrecognised MATRIX_FORMAT:2\n"},
  };
  for (const auto& c : cases) {
    std::string pattern = c.sentence;
    if (const auto at = pattern.find('~'); at != std::string::npos) pattern.replace(at, 1, ".*/m");
    EXPECT_EXIT(load(c.text, c.format), ExitedWithCode(255), "^" + pattern + "$") << c.text.substr(0, 80);
  }
}

TEST_F(MatrixTest, StopWeightCountsAmongTheExtremes) {
  p.STOP_WEIGHT = 700;
  const ScoreMatrix& m = load("t\nX\n-5\n", PIR);
  EXPECT_EQ(m.maxval, 700);
  EXPECT_EQ(m.minval, -500);
}

TEST_F(MatrixTest, CountsTheResiduesOfTheDatabase) {
  ScoreMatrix& m = load("t\nXA\n1 0 0 1\n", PIR);
  int8_t codes[] = {2, 1, 1, 0, 1, 0};  // the pad's code 2 is not counted
  SeqRec seq;
  seq.seq = codes;
  seq.len = 6;
  BdbInfo info;
  p.binfo = &info;
  info.nres = 4;
  GetDBFreqs(&seq, 1, &p);
  EXPECT_EQ(m.dbcount, (UTvector<int64_t>{1, 3, 0, 0, 0, 0}));
  EXPECT_EQ(m.dbfreq, (UTvector<double>{0.25, 0.75, 0, 0, 0, 0}));
  const std::string warnings = written([&](FILE* stream) {
    p.STDERR = stream;
    GetDBFreqs(&seq, 1, &p);
  });
  EXPECT_EQ(m.dbcount, (UTvector<int64_t>{2, 6, 0, 0, 0, 0})) << "counts add up";
  EXPECT_EQ(warnings, "# Warning: GetDBFreqs fchk = 2\n# Warning: GetDBFreqs cchk = 8\n");
}

// 0 / 0 is NaN, and so does not differ from 1 by more than a number.
TEST_F(MatrixTest, FrequenciesOfNoResidues) {
  load("t\nX\n1\n", PIR);
  BdbInfo info;
  p.binfo = &info;
  const std::string table = written([&](FILE* stream) {
    p.STDERR = stream;
    GetDBFreqs(nullptr, 0, &p);
    DumpDBFreqs(stream, &p);
  });
  EXPECT_EQ(table.find("# Frequency Table for database\n"), 0U) << table;
  EXPECT_EQ(count_of(table, "         0               nan\n"), 5);
}

TEST_F(MatrixTest, ShippedMatricesAreSquareSymmetricAndComplete) {
  for (const auto& entry : std::filesystem::directory_iterator(ZELVAN_SOURCE_DIR "/data/matrices")) {
    SCOPED_TRACE(entry.path());
    const ScoreMatrix& m = load(file_content(entry.path()), NCBI);
    EXPECT_EQ(m.indx, "ARNDCQEGHILKMFPSTWYVBZX ^:!");
    for (int32_t i = 0; i < m.inlen; ++i) {
      for (int32_t j = 0; j < i; ++j) EXPECT_EQ(m.pairscore[i][j], m.pairscore[j][i]);
    }
    const int32_t w = residue_code(m, 'W');
    EXPECT_EQ(m.maxval, m.pairscore[w][w]) << "the rarest residue scores highest in all of them";
    EXPECT_EQ(m.minval, -3000);
    if (entry.path().filename() == "BLOSUM62") {
      EXPECT_EQ(m.pairscore[w][w], 1100);
      EXPECT_EQ(m.pairscore[residue_code(m, 'I')][residue_code(m, 'V')], 300);
    }
  }
}

}  // namespace
}  // namespace zelvan
