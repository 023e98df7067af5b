#include "bdb/identifiers.h"

#include <gtest/gtest.h>

#include <string>

namespace zelvan {
namespace {

// Reads the identifiers of a text with EXTRACT_SEQ `wanted`: "ids joined by blanks/EXTRACT_SEQ afterwards".
std::string ids_of(const std::string& text, int32_t wanted) {
  Params p;
  p.EXTRACT_SEQ = wanted;
  p.STDERR = stderr;
  FILE* stream = std::tmpfile();
  std::fputs(text.c_str(), stream);
  std::rewind(stream);
  std::string joined;
  for (const UTstring& id : ReadIdListFromScanFile(stream, &p)) joined += std::string(id.c_str()) + " ";
  std::fclose(stream);
  return joined + "/" + std::to_string(p.EXTRACT_SEQ);
}

const std::string BEGIN = "# header\n# Start_Scores: ----\n";
const std::string LINES = "   1 90 a    title\n   2 80 b    title\n   3 70 c\n   4 60 d    title\n";
const std::string END = "# End_Scores: ----\n";

TEST(Identifiers, TheLastOfTheListIsDropped) {
  const std::string fitted = "   1   90 12.30  1e-10    a t\n   2   80 -1.2   0.5      b t\n";
  const struct {
    std::string text;
    int32_t wanted;
    const char* ids;
  } cases[] = {
      {BEGIN + LINES + END, 5, "a b c /3"},
      {BEGIN + LINES + END, 4, "a b c /4"},  // the end marker is not reached
      {BEGIN + LINES + END, 1, "/1"},
      {BEGIN + "   1 90 a\n" + END, INT32_MAX, "/0"},
      {BEGIN + END, 10, "/-1"},
      {BEGIN + LINES + END + BEGIN + LINES + END, 100, "a b c /3"},  // the first list counts
      {"# FIT_A: 1 2 3\n" + BEGIN + fitted + END, 9, "a /1"},        // moves the column
      {BEGIN + fitted + "# FIT\n" + END, 2, "12.30 /2"},             // but not within the list
  };
  for (const auto& c : cases) EXPECT_EQ(ids_of(c.text, c.wanted), c.ids) << c.text << c.wanted;
  for (const auto& [text, sentence] : {std::pair(BEGIN + LINES, "^No # End_Scores in file\n$"),
                                       std::pair("# FIT\n" + BEGIN + "90 1.0 0.5 a\n" + END,
                                                 "no word 5, the identifier:\n90 1.0 0.5 a\n")}) {
    EXPECT_EXIT(ids_of(text, 5), testing::ExitedWithCode(255), sentence);
  }
}

}  // namespace
}  // namespace zelvan
