#include "report/multiple_alignment.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "report/report_data.h"

namespace {

// A query and two rows: R1 aligned at query 2-4, R2 at 1 and 7 with a hole between.
struct Family {
  ScoreMatrix matrix = report_matrix();
  SeqRec query, one = reported_sequence("ROW_ONE", "first row", "CCRNDC");
  SeqRec two = reported_sequence("R2", "second", "AR");
  AlignData aldat;
  Params p;

  explicit Family(const std::string& residues)
      : query(reported_sequence("QUERY", "the query", residues)), aldat(initialise_aldat(query)) {
    set_keys(p, "PRECISION 100 SHOW_IDENT_WIDTH 6 OUTPUT_LENGTH 50 MULTIPLE_OUTPUT_LENGTH 4");
    p.ITERATION = 2;
    p.matrix = &matrix;
  }
  Family() : Family("ARNDCAR") {
    AlignRow& first = addseq_to_aldat(aldat, one, GAP);
    std::copy(one.seq + 3, one.seq + 6, first.aligned.begin() + 2);
    first.start = 3;
    first.end = 5;
    first.significance = 0.00012345;
    AlignRow& second = addseq_to_aldat(aldat, two, GAP);
    second.aligned[1] = 0;
    second.aligned[7] = 1;
    second.start = 1;
    second.end = 2;
  }
  std::string report() const {
    return printed([&] { print_multiple_alignment(aldat, &p); });
  }
  std::string frag_file() {
    return written([&](FILE* stream) {
      p.FRAG_FILE_OUT.stream = stream;
      print_frag_file(aldat, &p);
      p.FRAG_FILE_OUT.stream = nullptr;
    });
  }
};

// Letters shown of a query of given length and block width: position s + W - 1 of each full block is missing.
TEST(PrintMultipleAlignment, CutsBlocksByWidth) {
  const struct {
    const char* query;
    int32_t width;
    UTvector<std::string> blocks;
  } cases[] = {{"ARNDCARN", 4, {"ARN", "CAR"}},
               {"ARNDCARND", 4, {"ARN", "CAR", "D"}},
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
    for (std::size_t at = 0; (at = report.find("QUERY ", at)) != std::string::npos; ++at) {
      const std::size_t from = report.find(": ", at) + 2;
      blocks.push_back(report.substr(from, report.find('\n', from) - from));
    }
    EXPECT_EQ(blocks, c.blocks) << c.query << " " << c.width;
  }
  Family family;
  family.p.MULTIPLE_OUTPUT_LENGTH = 0;
  EXPECT_EXIT(family.report(), testing::ExitedWithCode(255), "MULTIPLE_OUTPUT_LENGTH is 0: ");
}

TEST(FragFile, HoldsQueryAndFragments) {
  Family family;
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

}  // namespace
