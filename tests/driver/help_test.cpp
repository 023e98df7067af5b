#include "driver/help.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/capture.h"

namespace {

std::string brief_help(int32_t flag) {
  return written([&](FILE* stream) { ZELVAN_BriefHelp(stream, flag); });
}

TEST(Help, IsWrittenOnRequestOnly) {
  const std::string help = brief_help(0);
  EXPECT_EQ(help.rfind("See zelvan_manual for FULL information.\nNormal scans:\nMODE  200:  ", 0), 0U);
  EXPECT_EQ(std::count(help.begin(), help.end(), '\n'), 25);
  EXPECT_NE(help.find("work...\n\nMODE 200 scan"), std::string::npos);
  EXPECT_TRUE(help.ends_with("creation of 13 \nAdd:  -ugd 0 -ld_pen 9 -li_pen 13\n\n"));
  EXPECT_EQ(brief_help(1), "");
}

TEST(HelpDeathTest, StandsBetweenTwoTitles) {
  const TemporaryDirectory work;
  const std::string path = work.at("help");
  const auto show = [&] { ZELVAN_PrintOptions(std::fopen(path.c_str(), "w"), {}, "9.9\n"); };
  EXPECT_EXIT(show(), testing::ExitedWithCode(255), "^$");
  const std::string rule = std::string(69, '-') + "\n";
  const std::string title = rule + "ZELVAN Version: 9.9\n" + CREDIT_LINES[0] + "\n" + rule;
  EXPECT_EQ(file_content(path), title + brief_help(0) + title);
}

}  // namespace
