#include "util/text.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/capture.h"

namespace {

TEST(Text, CopiesJoinsAndRemoves) {
  UTstring owned = UTstrdup("first");
  EXPECT_EQ(UTstrrename(owned, "a longer second text"), "a longer second text");
  EXPECT_EQ(&UTstrrename(owned, owned.c_str() + 9), &owned);
  EXPECT_EQ(owned, "second text");
  EXPECT_EQ(UTcat({"./", "/zelvan_alias.dat"}), ".//zelvan_alias.dat");
  UTstring text = "-M-K--";
  EXPECT_EQ(UTremovechar2(text, '-'), "MK");
}

TEST(Text, SplitsAtRunsOfSeparators) {
  const struct {
    const char* separators;
    const char* text;
    UTvector<UTstring> tokens;
  } cases[] = {{" ,\n\t", "LD_PEN, 10.5\tcomment\n", {"LD_PEN", "10.5", "comment"}},
               {" ,\n\t", " ,\t\n", {}},
               {"#\n", "", {}},
               {"#\n", "##a # b#\n\n", {"a ", " b"}},
               {"", "a b", {"a b"}}};
  for (const auto& c : cases) {
    TokenList found;
    found.tokens.emplace_back("stale");
    EXPECT_EQ(UTgettokens(c.separators, c.text, found), !c.tokens.empty()) << c.text;
    EXPECT_EQ(found.tokens, c.tokens) << c.text;
    EXPECT_EQ(found.count, static_cast<int32_t>(c.tokens.size()));
  }
}

TEST(Text, WritesFieldsOfFixedWidth) {
  const auto field = [](const char* text, int32_t width) {
    return written([&](FILE* stream) { UTpstring(stream, text, width); });
  };
  const auto title = [](int32_t width) {
    const char unterminated[3] = {'A', 'B', 'C'};
    return written([&](FILE* stream) { UTpTITLEstring(stream, unterminated, width, 3); });
  };
  const auto rule = [](int32_t n) { return written([&](FILE* stream) { UTpline(stream, '-', n); }); };
  for (const auto& [width, expected] : {std::pair(5, "ABC  "), std::pair(3, "ABC"), std::pair(2, "AB"),
                                        std::pair(0, ""), std::pair(-1, "")}) {
    EXPECT_EQ(field("ABC", width), expected);
    EXPECT_EQ(title(width), expected);
    EXPECT_EQ(rule(width), std::string(static_cast<std::size_t>(std::max(width, 0)), '-') + "\n");
  }
}

}  // namespace
