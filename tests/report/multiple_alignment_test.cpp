#include "report/multiple_alignment.h"

#include <gtest/gtest.h>

#include "report/report_data.h"

namespace {

Params settings() {
  Params p = params_of("SHOW_IDENT_WIDTH 6");
  static ScoreMatrix matrix = report_matrix();
  p.matrix = &matrix;
  return p;
}

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
  Params p = settings();
  const auto report = [&p](const char* residues) {
    const SeqRec query = reported_sequence("QUERY", "the query", residues);
    return printed([&] { print_multiple_alignment(initialise_aldat(query), &p); });
  };
  for (const auto& c : cases) {
    p.MULTIPLE_OUTPUT_LENGTH = c.width;
    const std::string text = report(c.query);
    UTvector<std::string> blocks;
    for (std::size_t at = 0; (at = text.find("QUERY ", at)) != std::string::npos; ++at) {
      const std::size_t from = text.find(": ", at) + 2;
      blocks.push_back(text.substr(from, text.find('\n', from) - from));
    }
    EXPECT_EQ(blocks, c.blocks) << c.query << " " << c.width;
  }
  p.MULTIPLE_OUTPUT_LENGTH = 0;
  EXPECT_EXIT(report("ARN"), testing::ExitedWithCode(255), "MULTIPLE_OUTPUT_LENGTH is 0: ");
}

TEST(FragFile, HoldsQueryAndFragments) {
  const SeqRec query = reported_sequence("QUERY", "the query", "ARNDCAR");
  const SeqRec one = reported_sequence("ONE", "first row", "CCRNDC"),
               two = reported_sequence("TWO", "second", "AR");
  AlignData aldat = initialise_aldat(query);
  for (const auto& [seq, start, end] : {std::tuple(&one, 3, 5), std::tuple(&two, 2, 1)}) {
    AlignRow& row = addseq_to_aldat(aldat, *seq, GAP);
    row.start = start;
    row.end = end;
  }
  Params p = settings();
  p.PRINT_FRAG_FILE = 1;
  const auto fragments = [&](int32_t format) {
    return written([&](FILE* stream) {
      p.FRAG_FILE_FORMAT = format;
      p.FRAG_FILE_OUT.stream = stream;
      print_frag_file(aldat, &p);
    });
  };
  EXPECT_EQ(fragments(1),
            ">QUERY(1-7:7) the query\nARNDCAR\n>ONE(3-5:6) first row\nRND\n>TWO(2-1:2) second\n\n");
  EXPECT_EQ(
      fragments(2),
      ">QUERY(1-7:7)\nthe query\nARNDCAR\n*\n>ONE(3-5:6)\nfirst row\nRND\n*\n>TWO(2-1:2)\nsecond\n\n*\n");
}

}  // namespace
