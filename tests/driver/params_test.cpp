#include "driver/params.h"

#include <gtest/gtest.h>

#include "driver/configuration.h"

namespace zelvan {
namespace {

TEST(Params, ValuesFollowTheTypeOfTheKey) {
  const Params* p = configured("");  // the built-in values; their texts are held against the alias file
  EXPECT_EQ(p->SUCCESS, 1);
  EXPECT_EQ(p->LD_PEN, 800);
  EXPECT_EQ(p->STOP_WEIGHT, -3000);
  EXPECT_EQ(p->PROBCUT, 0.001F);
  EXPECT_EQ(p->BDB_ROOT, "protein");
  p = configured(
      "# a comment, MODE 3\n   # another after blanks\n\n \t \n"
      "MODE 0202x and a comment\n"
      "-NITER,7\n"
      "MAX_NSEQ 99999999999\n"
      "SHOW_TITLES yes\n"
      "LD_PEN 10.5\n"
      "LI_PEN -0.555\n"
      "FS_PEN 0.29\n"
      "STOP_WEIGHT -2.9\n"
      "CUT_CONSTANT -7.9\n"
      "EPL_PEN 5\n"
      "PIDTHRESH 0.1\n"
      "GAP_CHARACTER #xyz\n"
      "DB_DIR /data\r\n\r\n"
      "MATRIX_FILE one MATRIX_FILE two\n"
      "QSEQ_FILE last.seq\r");
  ASSERT_EQ(p->SUCCESS, 1);
  EXPECT_EQ(p->MODE, 202);
  EXPECT_EQ(p->NITER, 7);
  EXPECT_EQ(p->MAX_NSEQ, 2147483647);
  EXPECT_EQ(p->SHOW_TITLES, 0) << "no digits";
  EXPECT_EQ(p->LD_PEN, 1050);
  EXPECT_EQ(p->LI_PEN, -55);
  EXPECT_EQ(p->FS_PEN, 28) << "0.29 x 100 is a little less than 29 in double precision";
  EXPECT_EQ(p->STOP_WEIGHT, -200) << "a whole number of matrix units";
  EXPECT_EQ(p->CUT_CONSTANT, -7);
  EXPECT_EQ(p->EPL_PEN, 5) << "not scaled";
  EXPECT_EQ(p->PIDTHRESH, 0.1);
  EXPECT_EQ(p->GAP_CHARACTER, '#');
  EXPECT_EQ(p->DB_DIR, "/data");
  EXPECT_EQ(p->MATRIX_FILE.name, "one");
  EXPECT_EQ(p->QSEQ_FILE.name, "last.seq");
}

TEST(Params, TheOrderOfLinesMatters) {
  const Params* p = configured("PRECISION 10\nLD_PEN 12\nDB_DIR /data\nBDB_ROOT nr\n");
  EXPECT_EQ(p->LD_PEN, 120);
  EXPECT_EQ(p->LI_PEN, 800) << "defaults stay scaled by 100";
  EXPECT_EQ(p->BDB_GIVEN, 1);
  EXPECT_EQ(p->BDB_ROOT, "nr");
  EXPECT_EQ(p->BDB_INDEX_FILE.name, "/data/nr.bix");
  EXPECT_EQ(p->BDB_SEQ_FILE.name, "/data/nr.bsq");
  p = configured("LD_PEN 12\nPRECISION 10\nBDB_ROOT nr\nDB_DIR /data\n");
  EXPECT_EQ(p->LD_PEN, 1200);
  EXPECT_EQ(p->BDB_INDEX_FILE.name, ".//nr.bix");
}

}  // namespace
}  // namespace zelvan
