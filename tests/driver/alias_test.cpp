#include "driver/alias.h"

#include <gtest/gtest.h>

#include "driver/configuration.h"

namespace {

bool read_text(std::string_view content, AliasTable& out_table, Params& p) {
  const TemporaryDirectory work;
  return read_aliases(work.file("alias", content).c_str(), out_table, &p);
}

TEST(Alias, ReadsKeysWordsAndDescriptions) {
  Params p;
  AliasTable table;
  const std::string long_word(70000, 'w');
  ASSERT_TRUE(read_text("QSEQ_FILE\ts  query # the query\r\nMODE#mode, of the search\nNITER # \n" +
                            long_word +
                            " x # long\n\nIGNORED # after the empty line\nnot even # two # signs\n",
                        table, p));
  ASSERT_EQ(table.size(), 4U);
  EXPECT_EQ(table[0].name, "QSEQ_FILE");
  EXPECT_EQ(table[0].words, (UTvector<UTstring>{"QSEQ_FILE", "s", "query"}));
  EXPECT_EQ(table[0].comment, " the query");
  EXPECT_EQ(table[1].words, UTvector<UTstring>{"MODE"});
  EXPECT_EQ(table[1].comment, "mode, of the search");
  EXPECT_EQ(table[3].name.size(), 70000U);
  EXPECT_EQ(p.SUCCESS, 0) << "left to the caller";
  for (const std::string line : {"NITER n", "NITER # a # b", "# a comment", "   # no word"}) {
    const std::string message =
        reported([&] { EXPECT_FALSE(read_text("MODE m # fine\n" + line + "\n", table, p)); });
    EXPECT_EQ(p.SUCCESS, -1);
    EXPECT_TRUE(table.empty());
    EXPECT_TRUE(message.starts_with("Should have text or newline after # symbol in alias file: ")) << message;
    EXPECT_TRUE(message.ends_with("  Line: 2\n")) << message;
  }
}

TEST(Alias, MatchesWordsOfTheKeyOnly) {
  const AliasTable table = {
      {"MODE", {"MODE", "m", "-x"}, ""}, {"NITER", {"NITER", "n"}, ""}, {"MODE", {"MODE", "again"}, ""}};
  for (const char* word : {"MODE", "-MODE", "m", "-m", "--x", "again"})
    EXPECT_EQ(alias(word, "MODE", table), 0) << word;
  for (const char* word : {"mode", "M", "--m", "-x", "n", "NITER", "", "-", "MODE "}) {
    EXPECT_EQ(alias(word, "MODE", table), -1) << word;
  }
  EXPECT_EQ(alias("n", "NITE", table), -1);
}

}  // namespace
