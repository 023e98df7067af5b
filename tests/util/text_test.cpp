#include "util/text.h"

#include <gtest/gtest.h>

#include "support/capture.h"

namespace {

TEST(Text, CopiesJoinsAndRemoves) {
  UTstring owned = UTstrdup("first");
  EXPECT_EQ(UTstrrename(owned, "a longer second text"), "a longer second text");
  EXPECT_EQ(&UTstrrename(owned, owned.c_str() + 9), &owned);
  EXPECT_EQ(owned, "second text");
  EXPECT_EQ(UTcat({"./", "/zelvan_alias.dat"}), ".//zelvan_alias.dat");
  EXPECT_EQ(UTcat({}), "");
  UTstring text = "-M-K--";
  EXPECT_EQ(UTremovechar2(text, '-'), "MK");
  EXPECT_EQ(UTremovechar2(text, '-'), "MK");
  EXPECT_EQ(UTstrcreate(5).size(), 5U);
  EXPECT_EQ(UTstrcreate(1).back(), '\0');
}

TEST(Text, SplitsAtRunsOfSeparators) {
  struct Case {
    const char* separators;
    const char* text;
    std::initializer_list<const char*> tokens;
  };
  const Case cases[] = {
      {" ,\n\t", "LD_PEN, 10.5\tcomment\n", {"LD_PEN", "10.5", "comment"}},
      {" ,\n\t", " ,\t\n", {}},
      {"#\n", "", {}},
      {"#\n", "##a # b#\n\n", {"a ", " b"}},
      {":\n", "one", {"one"}},
      {"", "a b", {"a b"}},
  };
  for (const Case& c : cases) {
    TokenList found;
    found.tokens.emplace_back("stale");
    EXPECT_EQ(UTgettokens(c.separators, c.text, found), c.tokens.size() > 0) << c.text;
    ASSERT_EQ(found.tokens.size(), c.tokens.size()) << c.text;
    EXPECT_EQ(found.count, static_cast<int32_t>(c.tokens.size()));
    std::size_t k = 0;
    for (const char* token : c.tokens) EXPECT_EQ(found.tokens[k++], token);
    UTfreetokens(found);
    EXPECT_EQ(found.count, 0);
  }
}

TEST(Text, WritesFieldsOfFixedWidth) {
  const auto field = [](const char* text, int32_t width) {
    return written([&](FILE* stream) { UTpstring(stream, text, width); });
  };
  EXPECT_EQ(field("ABCD", 10), "ABCD      ");
  EXPECT_EQ(field("ABCDEFGHIJKL", 10), "ABCDEFGHIJ");
  EXPECT_EQ(field("", 3), "   ");
  EXPECT_EQ(field("ABC", 0), "");
  EXPECT_EQ(field("ABC", -5), "");
  const auto title = [](int32_t width, int32_t length) {
    const char unterminated[3] = {'A', 'B', 'C'};
    return written([&](FILE* stream) { UTpTITLEstring(stream, unterminated, width, length); });
  };
  EXPECT_EQ(title(5, 3), "ABC  ");
  EXPECT_EQ(title(3, 3), "ABC");
  EXPECT_EQ(title(2, 3), "AB");
  EXPECT_EQ(title(0, 3), "");
  EXPECT_EQ(title(-1, 3), "");
}

TEST(Text, WritesRules) {
  const auto rule = [](int32_t n) { return written([&](FILE* stream) { UTpline(stream, '-', n); }); };
  EXPECT_EQ(rule(4), "----\n");
  EXPECT_EQ(rule(0), "\n");
  EXPECT_EQ(rule(-1), "\n");
}

}  // namespace
