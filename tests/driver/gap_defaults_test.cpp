#include "driver/gap_defaults.h"

#include <gtest/gtest.h>

#include "driver/configuration.h"

namespace zelvan {
namespace {

TEST(GapDefaults, FirstFittingEntryWins) {
  Params* p = configured("");
  const TemporaryDirectory work;
  const std::string path = work.file(
      "gapdefs",
      "0:md.mat:1:2:3:4\n2:md.mat:5:6:7:8\n2:md.mat:50:60:70:80\n200:md.mat:9:9:9:9\n22:md.mat:11:12:13:14\n"
      "2:MD.MAT:90:90:90:90\n0:./md.mat:15:16:17:18\n");
  ASSERT_TRUE(GetGaps(path.c_str(), p));
  const struct {
    int32_t mode;
    const char* matrix;
    int32_t use, ld, fse;  // 800: unchanged
  } cases[] = {{0, "md.mat", 1, 100, 400},  {200, "md.mat", 1, 100, 400},  {210, "md.mat", 1, 100, 400},
               {2, "md.mat", 1, 500, 800},  {202, "md.mat", 1, 500, 800},  {212, "md.mat", 1, 500, 800},
               {2, "md.mat", 0, 800, 800},  {22, "md.mat", 1, 1100, 1400}, {210, "./md.mat", 1, 1500, 1800},
               {20, "md.mat", 1, 800, 800}, {2, "other", 1, 800, 800},     {2, "md.mat", 2, 800, 800}};
  for (const auto& c : cases) {
    p->MODE = c.mode;
    p->MATRIX_FILE.name = c.matrix;
    p->USE_GAPDEFS = c.use;
    p->LD_PEN = p->LI_PEN = p->FS_PEN = p->FSE_PEN = 800;
    setgapdefs(p);
    EXPECT_EQ(p->LD_PEN, c.ld) << c.mode << c.matrix;
    EXPECT_EQ(p->LI_PEN, c.ld == 800 ? 800 : c.ld + 100);
    EXPECT_EQ(p->FS_PEN, c.ld == 800 ? 800 : c.ld + 200);
    EXPECT_EQ(p->FSE_PEN, c.fse);
    EXPECT_EQ(p->MM_LD_PEN, 600);
  }
}

}  // namespace
}  // namespace zelvan
