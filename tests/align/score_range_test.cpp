#include "align/score_range.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"

namespace {

// A query of four residues whose largest entries are `highest`, and one target of ten: 6 + 12 steps.
struct Trial {
  ScoreMatrix matrix = match_or_not("ABCX", 1, 1);
  Params p = small_params(202);
  LookupTable table = simple_look(6, matrix);

  explicit Trial(int32_t highest) {
    for (int32_t i = 1; i <= 4; ++i) {
      table[0][i] = -5;
      table[i % 2 + 1][i] = highest;
    }
  }
  void check() const {
    SeqRec target;
    target.len = 12;
    check_score_range(table, matrix, &target, 1, &p);
  }
  void expect_refused(const char* message) const {
    EXPECT_EXIT(check(), ::testing::ExitedWithCode(255), message);
  }
};

TEST(ScoreRange, TheBestPathMustFit) {
  constexpr int32_t QUARTER = INT32_MAX / 4;
  Trial trial(QUARTER);
  trial.table[3][2] = QUARTER + 3;  // exactly 2^31 - 1 in all
  trial.check();
  trial.table[3][2] = QUARTER + 4;
  trial.p.PRECISION = 1000;
  trial.expect_refused(
      "Scores of this query x PRECISION \\(1000\\) could reach 2147483648 \\(at most 2147483647\\)");
}

TEST(ScoreRange, NegativePenaltiesAddToEveryStep) {
  for (int32_t Params::*penalty : {&Params::LD_PEN, &Params::LI_PEN, &Params::FS_PEN, &Params::FSE_PEN}) {
    Trial trial(0);
    for (const int32_t fits : {INT32_MAX, -(INT32_MAX / 18)}) {
      trial.p.*penalty = fits;
      trial.check();
    }
    --(trial.p.*penalty);
    trial.expect_refused("could reach 21474836");
  }
}

TEST(ScoreRange, GapRowsCountInTheModesThatUseThem) {
  for (const char gap : {' ', ':'}) {
    Trial trial(0);
    trial.table[residue_code(trial.matrix, gap)][3] = INT32_MIN;
    trial.check();
    for (const int32_t mode : {210, 212}) {
      trial.p.MODE = mode;
      trial.expect_refused("could reach");
    }
  }
}

}  // namespace
