#include "driver/command_line.h"

#include <gtest/gtest.h>

#include "driver/configuration.h"
#include "driver/help.h"

namespace {

// What the program says of arguments that cannot be meant, and where, is tried on the program.
TEST(CommandLine, AppliesPairsInOrder) {
  const Params* p =
      apply(configured("LD_PEN 3\n"),
            {"-mode", "202",    "LD_PEN", "9",  "-ld_pen",   "7.5",   "-prec",    "10",   "-li_pen", "13",
             "-m",    "PAM100", "-bdb",   "nr", "-probcut2", "0.001", "-probcut", "1e-9", "-s",      ""});
  EXPECT_EQ(p->SUCCESS, 1);
  EXPECT_EQ(p->MODE, 202);
  EXPECT_EQ(p->LD_PEN, 750) << "the later value wins, scaled by the precision so far";
  EXPECT_EQ(p->LI_PEN, 130);
  EXPECT_EQ(p->MATRIX_FILE.name, "PAM100");
  EXPECT_EQ(p->BDB_INDEX_FILE.name, ".//nr.bix");
  EXPECT_EQ(p->PROBCUT2, 0.001F);
  EXPECT_EQ(p->PROBCUT, 1e-9F) << "a cut that comes later may be below that of the profile";
  EXPECT_EQ(p->QSEQ_FILE.name, "");
}

TEST(CommandLine, HelpIsWrittenOnRequestOnly) {
  EXPECT_EQ(written([](FILE* stream) { ZELVAN_BriefHelp(stream, 1); }), "");
}

}  // namespace
