#include "report/multiple_alignment.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "report_data.h"

namespace {

// A query of seven residues and two rows: R1 aligned at query 2-4, R2 at 1 and 7 with a hole between.
struct Family {
  Sequences seqs;
  ScoreMatrix matrix = small_matrix();
  AlignData aldat;
  Params p;

  explicit Family(const std::string& query = "ARNDCAR") {
    seqs.add("QUERY", "the query", query).add("ROW_ONE", "first row", "CCRNDC").add("R2", "second", "AR");
    aldat = initialise_aldat(seqs.records[0]);
    p.PRECISION = 100;
    p.SHOW_IDENT_WIDTH = 6;
    p.OUTPUT_LENGTH = 50;
    p.MULTIPLE_OUTPUT_LENGTH = 4;
    p.ITERATION = 2;
    p.matrix = &matrix;
  }
  void add_rows() {
    AlignRow& one = addseq_to_aldat(aldat, seqs.records[1], GAP);
    std::copy(seqs.records[1].seq + 3, seqs.records[1].seq + 6, one.aligned.begin() + 2);
    one.start = 3;
    one.end = 5;
    one.significance = 0.00012345;
    AlignRow& two = addseq_to_aldat(aldat, seqs.records[2], GAP);
    two.aligned[1] = 0;
    two.aligned[7] = 1;
    two.start = 1;
    two.end = 2;
  }
  std::string report() const {
    return written([&](FILE*) { print_multiple_alignment(aldat, &p); });
  }
  std::string block_file() {
    p.PRINT_BLOCK_FILE = 1;
    const std::string caught = written([&](FILE* stream) {
      p.BLOCK_FILE_OUT.stream = stream;
      print_multiple_alignment(aldat, &p);
    });
    return caught.substr(caught.find("# Alignment from"));
  }
  std::string frag_file() {
    return written([&](FILE* stream) {
      p.FRAG_FILE_OUT.stream = stream;
      print_frag_file(aldat, &p);
    });
  }
};

const std::string START =
    "# \n# Multiple alignment Start for iteration: 2\n# Format: Simple\n# Residues_per_line: 50\n";
const std::string END = "#\n# Multiple alignment End for iteration: 2\n#\n";

TEST(Aldat, AddsRowsOfFill) {
  Family family;
  AlignRow& row = addseq_to_aldat(family.aldat, family.seqs.records[2], GAP);
  EXPECT_EQ(row.aligned, (UTvector<int8_t>{6, 6, 6, 6, 6, 6, 6, 6, 0}));
  EXPECT_EQ(row.seq, &family.seqs.records[2]);
  EXPECT_EQ(row.qstart + row.qend + row.start + row.end, 0);
  for (int k = 0; k < 50; ++k) addseq_to_aldat(family.aldat, family.seqs.records[1], 5);
  EXPECT_EQ(family.aldat.rows.size(), 51u);
  EXPECT_EQ(family.aldat.rows[0].seq, &family.seqs.records[2]);
  EXPECT_EQ(family.aldat.rows[50].aligned[7], 5);
  destroy_aldat(family.aldat);
  EXPECT_TRUE(family.aldat.rows.empty());
}

TEST(PrintMultipleAlignment, LeavesOutTheLastColumnOfAFullBlock) {
  Family family;
  family.add_rows();
  family.p.PROB_TYPE = 1;
  const std::string blocks =
      "#\n"
      "# ID   Evalue   Start   End   Len\n"
      "#                                  1         \n"
      "QUERY  0             1     7     7: ARN\n"
      "ROW_ON 0.000123      3     5     6:  RN\n"
      "R2     0             1     2     2: A  \n"
      "#\n"
      "# ID   Evalue   Start   End   Len\n"
      "#                                  5         \n"
      "QUERY  0             1     7     7: CAR\n"
      "ROW_ON 0.000123      3     5     6:    \n"
      "R2     0             1     2     2:   R\n";
  EXPECT_EQ(family.report(), START + blocks + END);
  family.p.PROB_TYPE = 0;
  EXPECT_NE(family.report().find("# ID   Pvalue   Start"), std::string::npos);
}

// Letters shown of a query of given length and block width: position s + W - 1 of each full block is missing.
TEST(PrintMultipleAlignment, CutsBlocksByWidth) {
  const struct {
    const char* query;
    int32_t width;
    UTvector<std::string> blocks;
  } cases[] = {{"ARNDCARN", 4, {"ARN", "CAR"}},
               {"ARNDCARND", 4, {"ARN", "CAR", "D"}},
               {"ARN", 100, {"ARN"}},
               {"ARN", 4, {"ARN"}},
               {"ARN", 3, {"AR"}},
               {"AR", 1, {"", ""}},
               {"", 4, {}},
               {"ARN", 2147483647, {"ARN"}}};
  for (const auto& c : cases) {
    Family family(c.query);
    family.p.MULTIPLE_OUTPUT_LENGTH = c.width;
    const std::string report = family.report();
    UTvector<std::string> blocks;
    for (std::size_t at = report.find("QUERY "); at != std::string::npos;
         at = report.find("QUERY ", at + 1)) {
      const std::size_t from = report.find(": ", at) + 2;
      blocks.push_back(report.substr(from, report.find('\n', from) - from));
    }
    EXPECT_EQ(blocks, c.blocks) << c.query << " " << c.width;
  }
}

TEST(PrintMultipleAlignment, RefusesBlocksWithoutColumns) {
  Family family;
  family.p.MULTIPLE_OUTPUT_LENGTH = 0;
  EXPECT_EXIT(family.report(), testing::ExitedWithCode(255), "MULTIPLE_OUTPUT_LENGTH is 0: ");
}

TEST(BlockFile, HoldsOneColumnALine) {
  Family family;
  family.add_rows();
  EXPECT_EQ(family.block_file(),
            "# Alignment from izelvan iteration:2\n"
            "# The first sequence is the query - all other sequences may be fragments\n"
            "#\n"
            ">QUERY  0             1     7     7: the query\n"
            ">ROW_ON 0.000123      3     5     6: first row\n"
            ">R2     0             1     2     2: second\n"
            "*Iteration: 2\n"
            "A A\nRR \nNN \nDD \nC  \nA  \nR R\n"
            "*\n");
  Family alone("AR");
  const std::string file = alone.block_file();
  EXPECT_EQ(file.substr(file.find(">")),
            ">QUERY  0             1     2     2: the query\n*Iteration: 2\nA\nR\n*\n");
}

TEST(FragFile, HoldsQueryAndFragments) {
  Family family;
  family.add_rows();
  family.aldat.rows[1].start = 2;
  family.aldat.rows[1].end = 1;
  EXPECT_EQ(family.frag_file(), "");  // not asked for
  family.p.PRINT_FRAG_FILE = 1;
  family.p.FRAG_FILE_FORMAT = 1;
  EXPECT_EQ(family.frag_file(),
            ">QUERY(1-7:7) the query\nARNDCAR\n>ROW_ONE(3-5:6) first row\nRND\n>R2(2-1:2) second\n\n");
  family.p.FRAG_FILE_FORMAT = 2;
  EXPECT_EQ(family.frag_file(),
            ">QUERY(1-7:7)\nthe query\nARNDCAR\n*\n>ROW_ONE(3-5:6)\nfirst row\nRND\n*\n"
            ">R2(2-1:2)\nsecond\n\n*\n");
}

TEST(SideFiles, ThatAreNotOpenAreLeftAlone) {
  Family family;
  family.add_rows();
  family.p.PRINT_FRAG_FILE = family.p.PRINT_BLOCK_FILE = 1;
  print_frag_file(family.aldat, &family.p);
  const std::string report = family.report();
  EXPECT_EQ(report.substr(report.size() - END.size()), END);
}

}  // namespace
