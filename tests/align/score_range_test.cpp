#include "align/score_range.h"

#include <gtest/gtest.h>

#include "support/small_alphabet.h"

namespace zelvan {

// A query of four residues and one target of ten, 6 + 12 steps. Position 2 may score
// `top`, the others `high` each.
TEST(ScoreRange, TheBestPathMustFit) {
  constexpr int32_t LIMIT = INT32_MAX, QUARTER = LIMIT / 4, STEP = -(LIMIT / 18);
  const struct {
    int32_t mode, high, top, penalty, gap_row, open_row;
    bool fits;
    const char* counted = "";  // residues of the database
  } cases[] = {
      {202, QUARTER, QUARTER + 3, LIMIT, 0, 0, true},  // exactly 2^31 - 1 in all
      {202, QUARTER, QUARTER + 4, 0, 0, 0, false},
      // Negative penalties add to every step.
      {202, 0, 0, STEP, 0, 0, true},
      {202, 0, 0, STEP - 1, 0, 0, false},
      // Gap rows count in the modes that use them.
      {202, 0, 0, 0, STEP - 1, STEP - 1, true},
      {210, 0, 0, 0, STEP - 1, 0, false},
      {212, 0, 0, 0, 0, STEP - 1, false},
      // Penalties are no scores, unless a residue reads them as such.
      {202, QUARTER, QUARTER + 3, 0, LIMIT, LIMIT, true, "ABCX"},
      {202, QUARTER, QUARTER + 3, 0, QUARTER + 1, 0, false, "ABCX "},
      {202, QUARTER, QUARTER + 3, 0, 0, QUARTER + 1, false, "ABCX:"},
  };
  SeqRec target;
  target.len = 12;
  for (const auto& c : cases) {
    ScoreMatrix matrix = match_or_not("ABCX", 1, 1);
    for (const char* letter = c.counted; *letter != 0; ++letter) {
      matrix.dbcount[static_cast<std::size_t>(residue_code(matrix, *letter))] = 1;
    }
    for (const auto key : {&Params::LD_PEN, &Params::LI_PEN, &Params::FS_PEN, &Params::FSE_PEN}) {
      Params p = small_params(c.mode);
      p.*key = c.penalty;
      LookupTable table = simple_look(6, matrix);
      for (int32_t i = 1; i <= 4; ++i) {
        table[0][i] = -5;
        table[i % 2 + 1][i] = c.high;
      }
      table[3][2] = c.top;
      table[residue_code(matrix, ' ')][3] = c.gap_row;
      table[residue_code(matrix, ':')][3] = c.open_row;
      const auto check = [&] { check_score_range(table, matrix, &target, 1, &p); };
      if (c.fits) {
        check();
      } else {
        EXPECT_EXIT(check(), ::testing::ExitedWithCode(255),
                    "could reach 21474836.. \\(at most 2147483647\\)");
      }
    }
  }
}

}  // namespace zelvan
