#include "driver/gap_defaults.h"

#include <gtest/gtest.h>

#include "driver/configuration.h"

namespace {

TEST(GapDefaults, ReadsEntriesInFileOrder) {
  Params* p = configured("PRECISION 100\n");
  ASSERT_TRUE(
      read_gaps("# comment\n2:md.mat:1.5:12:0.29:-0.555\r\n::20:name with blanks::8:9:10:11:rest\n#\n"
                "0:x:1:2:3:4\n\n0:ignored\n",
                p));
  EXPECT_EQ(p->SUCCESS, 1);
  ASSERT_EQ(p->NGAPDEFS, 3);
  ASSERT_EQ(p->GAPDEFS.size(), 3U);
  EXPECT_EQ(p->GAPDEFS[0].mode, 2);
  EXPECT_EQ(p->GAPDEFS[0].matrix, "md.mat");
  EXPECT_EQ(p->GAPDEFS[0].ld_pen, 150);
  EXPECT_EQ(p->GAPDEFS[0].li_pen, 1200);
  EXPECT_EQ(p->GAPDEFS[0].fs_pen, 28);
  EXPECT_EQ(p->GAPDEFS[0].fse_pen, -55);
  EXPECT_EQ(p->GAPDEFS[1].mode, 20);
  EXPECT_EQ(p->GAPDEFS[1].matrix, "name with blanks");
  EXPECT_EQ(p->GAPDEFS[1].fse_pen, 1100);
  for (const char* none : {"", "\n2:md.mat:1:2:3:4\n", "\r\n2:md.mat:1:2:3:4\n", "# only a comment"}) {
    EXPECT_TRUE(read_gaps(none, p));
    EXPECT_EQ(p->NGAPDEFS, 0);
    EXPECT_EQ(p->SUCCESS, 1);
  }
  p = configured("PRECISION 10\n");
  EXPECT_TRUE(read_gaps("2:md.mat:1:2:3:4\n", p));
  EXPECT_EQ(p->GAPDEFS[0].li_pen, 20) << "scaled by the precision of the defaults file";
}

TEST(GapDefaults, RejectsMalformedLines) {
  std::string too_many;
  for (int k = 0; k < 500; ++k) too_many += "2:md.mat:1:2:3:4\n";
  Params* p = configured("");
  EXPECT_TRUE(read_gaps(too_many, p));
  EXPECT_EQ(p->NGAPDEFS, 500);
  too_many += "2:md.mat:1:2:3:4\n";
  const struct {
    std::string content;
    const char* line;
  } cases[] = {{"2:md.mat:1:2:3\n", "Line: 1\n"},
               {"#\n:::\n", "Line: 2\n"},
               {" \n", "Line: 1\n"},
               {too_many, "Line: 501\n"}};
  for (const auto& c : cases) {
    const std::string message = reported([&] { EXPECT_FALSE(read_gaps(c.content, p)); });
    EXPECT_EQ(message.rfind("Error decoding gap penalties: ", 0), 0U) << message;
    EXPECT_NE(message.find(c.line), std::string::npos) << message;
    EXPECT_EQ(p->SUCCESS, -1);
    EXPECT_EQ(p->NGAPDEFS, 0);
  }
  const std::string message = reported([&] { EXPECT_FALSE(GetGaps("/missing/gapdefs", p)); });
  EXPECT_EQ(message, "Error opening gapdefs file: No such file or directory\nFile: /missing/gapdefs\n");
  EXPECT_EQ(p->SUCCESS, -1);
}

TEST(GapDefaults, TellsItsStepsWhenVerbose) {
  for (int32_t verbose : {50, 51}) {
    Params* p = configured("");
    p->VERBOSE = verbose;
    EXPECT_EQ(reported([&] { read_gaps("", p); }),
              verbose > 50 ? "###Now in GetGaps \nAllocating gaps array structure \n" : "");
  }
}

TEST(GapDefaults, FirstFittingEntryWins) {
  const char* table =
      "0:md.mat:1:2:3:4\n2:md.mat:5:6:7:8\n2:md.mat:50:60:70:80\n200:md.mat:9:9:9:9\n22:md.mat:11:12:13:14\n"
      "2:MD.MAT:90:90:90:90\n0:./md.mat:15:16:17:18\n";
  const struct {
    int32_t mode;
    const char* matrix;
    int32_t use;
    int32_t ld, fse;  // 800: unchanged
  } cases[] = {
      {0, "md.mat", 1, 100, 400},    {200, "md.mat", 1, 100, 400}, {210, "md.mat", 1, 100, 400},
      {2, "md.mat", 1, 500, 800},    {202, "md.mat", 1, 500, 800}, {212, "md.mat", 1, 500, 800},
      {22, "md.mat", 1, 1100, 1400}, {20, "md.mat", 1, 800, 800},  {210, "./md.mat", 1, 1500, 1800},
      {2, "./md.mat", 1, 800, 800},  {2, "other", 1, 800, 800},    {2, "md.mat", 0, 800, 800},
      {2, "md.mat", 2, 800, 800},
  };
  for (const auto& c : cases) {
    Params* p = configured("");
    ASSERT_TRUE(read_gaps(table, p));
    p->MODE = c.mode;
    p->MATRIX_FILE.name = c.matrix;
    p->USE_GAPDEFS = c.use;
    setgapdefs(p);
    EXPECT_EQ(p->LD_PEN, c.ld) << c.mode << c.matrix;
    EXPECT_EQ(p->LI_PEN, c.ld == 800 ? 800 : c.ld + 100);
    EXPECT_EQ(p->FS_PEN, c.ld == 800 ? 800 : c.ld + 200);
    EXPECT_EQ(p->FSE_PEN, c.fse);
    EXPECT_EQ(p->MM_LD_PEN, 600);
  }
}

}  // namespace
