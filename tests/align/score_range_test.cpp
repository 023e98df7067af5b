#include "align/score_range.h"

#include <gtest/gtest.h>

#include "small_problem.h"

namespace {

// A query of four residues whose largest entries are `highest`, and one target of ten.
struct Trial {
  ScoreMatrix matrix = small_matrix("ABCX", [](int32_t, int32_t) { return 1; });
  Params p = small_params(202);
  LookupTable table = simple_look(6, matrix);
  SeqRec target;

  explicit Trial(int32_t highest) {
    for (int32_t i = 1; i <= 4; ++i) {
      table[0][i] = -5;
      table[i % 2 + 1][i] = highest;
    }
    target.len = 12;
  }
  void check() const { check_score_range(table, matrix, &target, 1, &p); }
};

constexpr int32_t QUARTER = INT32_MAX / 4;

TEST(ScoreRange, TheBestPathMustFit) {
  Trial fits(QUARTER);
  fits.check();
  fits.table[3][2] = QUARTER + 3;  // exactly 2^31 - 1 in all
  fits.check();
  fits.table[3][2] = QUARTER + 4;
  fits.p.PRECISION = 1000;
  EXPECT_EXIT(fits.check(), ::testing::ExitedWithCode(255),
              "Scores of this query x PRECISION \\(1000\\) could reach 2147483648 \\(at most 2147483647\\)");
}

TEST(ScoreRange, NegativePenaltiesAddToEveryStep) {
  for (int32_t Params::*penalty : {&Params::LD_PEN, &Params::LI_PEN, &Params::FS_PEN, &Params::FSE_PEN}) {
    Trial trial(0);
    trial.p.*penalty = -(INT32_MAX / 18);  // 6 + 12 steps
    trial.check();
    --(trial.p.*penalty);
    EXPECT_EXIT(trial.check(), ::testing::ExitedWithCode(255), "could reach 21474836");
    trial.p.*penalty = INT32_MAX;
    trial.check();
  }
}

TEST(ScoreRange, GapRowsCountInTheModesThatUseThem) {
  for (const char gap : {' ', ':'}) {
    Trial trial(0);
    trial.table[residue_code(trial.matrix, gap)][3] = INT32_MIN;
    trial.check();
    for (const int32_t mode : {210, 212}) {
      trial.p.MODE = mode;
      EXPECT_EXIT(trial.check(), ::testing::ExitedWithCode(255), "could reach");
    }
  }
}

}  // namespace
