#include "align/score_range.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"

// A query of four residues and one target of ten, 6 + 12 steps. `top` is the highest entry of position 2, a
// quarter of the limit that of the others where `high`.
TEST(ScoreRange, TheBestPathMustFit) {
  constexpr int32_t LIMIT = INT32_MAX, QUARTER = LIMIT / 4, STEP = -(LIMIT / 18);
  using Penalty = int32_t Params::*;
  const struct {
    bool high;
    int32_t top, mode;
    Penalty penalty;
    int32_t value;
    int32_t gap_row, open_row;
    const char* refused;
  } cases[] = {
      {true, QUARTER, 202, &Params::LD_PEN, 0, 0, 0, ""},
      {true, QUARTER + 3, 202, &Params::LD_PEN, 0, 0, 0, ""},  // exactly 2^31 - 1 in all
      {true, QUARTER + 4, 202, &Params::LD_PEN, 0, 0, 0,
       "Scores of this query x PRECISION \\(1000\\) could reach 2147483648 \\(at most 2147483647\\)"},
      {false, 0, 202, &Params::LD_PEN, LIMIT, 0, 0, ""},
      {false, 0, 202, &Params::LD_PEN, STEP, 0, 0, ""},
      // Negative penalties add to every step.
      {false, 0, 202, &Params::LD_PEN, STEP - 1, 0, 0, "could reach 21474836"},
      {false, 0, 202, &Params::LI_PEN, STEP - 1, 0, 0, "could reach 21474836"},
      {false, 0, 202, &Params::FS_PEN, STEP - 1, 0, 0, "could reach 21474836"},
      {false, 0, 202, &Params::FSE_PEN, STEP - 1, 0, 0, "could reach 21474836"},
      // Gap rows count in the modes that use them.
      {false, 0, 202, &Params::LD_PEN, 0, INT32_MIN, INT32_MIN, ""},
      {false, 0, 210, &Params::LD_PEN, 0, INT32_MIN, 0, "could reach"},
      {false, 0, 210, &Params::LD_PEN, 0, 0, INT32_MIN, "could reach"},
      {false, 0, 212, &Params::LD_PEN, 0, INT32_MIN, 0, "could reach"},
      {false, 0, 212, &Params::LD_PEN, 0, 0, INT32_MIN, "could reach"},
  };
  const ScoreMatrix matrix = match_or_not("ABCX", 1, 1);
  SeqRec target;
  target.len = 12;
  for (const auto& c : cases) {
    Params p = small_params(c.mode);
    p.PRECISION = 1000;
    p.*c.penalty = c.value;
    LookupTable table = simple_look(6, matrix);
    for (int32_t i = 1; i <= 4; ++i) {
      table[0][i] = -5;
      table[i % 2 + 1][i] = c.high ? QUARTER : 0;
    }
    table[3][2] = c.top;
    table[residue_code(matrix, ' ')][3] = c.gap_row;
    table[residue_code(matrix, ':')][3] = c.open_row;
    if (*c.refused == '\0') {
      check_score_range(table, matrix, &target, 1, &p);
    } else {
      EXPECT_EXIT(check_score_range(table, matrix, &target, 1, &p), ::testing::ExitedWithCode(255),
                  c.refused);
    }
  }
}
