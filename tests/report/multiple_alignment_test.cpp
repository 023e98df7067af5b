#include "report/multiple_alignment.h"

#include <gtest/gtest.h>

#include "report/report_data.h"

namespace zelvan {
namespace {

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
  Params p = params_of("SHOW_IDENT_WIDTH 6");
  p.matrix = std::make_shared<ScoreMatrix>(report_matrix());
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

}  // namespace
}  // namespace zelvan
