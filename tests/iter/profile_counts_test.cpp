#include "iter/profile_counts.h"

#include <gtest/gtest.h>

#include "iter/family.h"

namespace zelvan {

TEST(CalcProfile, AveragesAndStretchesToTheLastInteger) {
  // Alphabet A C X and the special codes 3 (gap), 4, 5 and 6 (stop); deliberately asymmetric.
  constexpr int32_t scores[3][3] = {{407, -150, -51}, {-233, 900, -52}, {-101, -102, -103}};
  const ScoreMatrix matrix = small_matrix(
      "ACX", [&](int32_t a, int32_t b) { return scores[a][b]; }, -1000);
  const Codes query = encoded("AC", matrix);
  const Params p = profile_params();
  LookupTable table = make_table<int32_t>(matrix.inlen, 4, 77),
              count = make_table<int32_t>(matrix.inlen, 4, 0);
  count[1][1] = 2;  // C twice opposite A
  count[3][2] = 3;  // opposite C three gaps
  count[0][2] = 1;  // and an A
  EXPECT_EQ(calc_profile(query.data(), 4, matrix, table, count, &p), (UTvector<int32_t>{1, 3, 5}));
  // Before stretching. Position 0: one gap (the pad). 1: A + 2 C. 2: A + C + 3 gaps.
  //   A: 0, (407 - 300) / 3 = 35, (407 - 150) / 5 = 51
  //   C: 0, (-233 + 1800) / 3 = 522, (-233 + 900) / 5 = 133
  //   X: 0, (-101 - 204) / 3 = -101, (-101 - 102) / 5 = -40
  //   gap: ln(1/2) = -69, 0, ln(3/8) = -98;  stop: -1000 throughout
  // Highest 522 becomes 900, lowest -1000 stays. The last entry of a row is not written.
  EXPECT_EQ(table.cells,
            (UTvector<int32_t>{0,   60, 87, 77, 0, 900, 229, 77, 0, -101, -40,   77,    -69,   0,
                               -98, 77, 0,  0,  0, 77,  0,   0,  0, 77,   -1000, -1000, -1000, 77}));
}

}  // namespace zelvan
