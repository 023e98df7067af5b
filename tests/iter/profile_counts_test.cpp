#include "iter/profile_counts.h"

#include <gtest/gtest.h>

#include <cmath>

#include "alignment_fixture.h"

namespace {

using namespace fixture;

// Alphabet A C X and the special codes 3 (gap), 4, 5 and 6 (stop); deliberately asymmetric.
ScoreMatrix small_matrix() {
  ScoreMatrix m = matrix_of("ACX", -1000);
  const int32_t scores[3][3] = {{407, -150, -51}, {-233, 900, -52}, {-101, -102, -103}};
  for (int32_t a = 0; a < 3; ++a) {
    for (int32_t b = 0; b < 3; ++b) m.pairscore[a][b] = scores[a][b];
  }
  set_extremes(m);
  return m;
}

TEST(CalcProfile, AveragesAndStretchesToTheLastInteger) {
  const ScoreMatrix matrix = small_matrix();
  const Sequence query(matrix, "AC");
  const Params p = params();
  LookupTable table = make_table<int32_t>(matrix.inlen, query.record.len, 77);
  LookupTable count = make_table<int32_t>(matrix.inlen, query.record.len, 0);
  count[1][1] = 2;  // C twice opposite A
  count[3][2] = 3;  // three gaps opposite C
  count[0][2] = 1;  // and one A
  const UTvector<int32_t> total = calc_profile(query.codes.data(), 4, matrix, table, count, &p);
  EXPECT_EQ(total, (UTvector<int32_t>{1, 3, 5}));

  // Before stretching. Position 0: one gap (the pad). 1: A + 2 C. 2: A + C + 3 gaps.
  //   A: 0, (407 - 300) / 3 = 35, (407 - 150) / 5 = 51
  //   C: 0, (-233 + 1800) / 3 = 522, (-233 + 900) / 5 = 133
  //   X: 0, (-101 - 204) / 3 = -101, (-101 - 102) / 5 = -40
  //   gap: ln(1/2) = -69, 0, ln(3/8) = -98;  stop: -1000 throughout
  // Highest 522 becomes 900, lowest -1000 stays.
  const int32_t expected[7][3] = {{0, 60, 87}, {0, 900, 229}, {0, -101, -40},       {-69, 0, -98},
                                  {0, 0, 0},   {0, 0, 0},     {-1000, -1000, -1000}};
  for (int32_t c = 0; c < 7; ++c) {
    for (int32_t i = 0; i < 3; ++i)
      EXPECT_EQ(table[c][i], expected[c][i]) << "code " << c << " position " << i;
    EXPECT_EQ(table[c][3], 77) << "the last entry is not written";
  }
}

// Only the query counted: the matrix column of each residue, read pairscore[c][query], stretched.
TEST(CalcProfile, WithoutHitsIsTheMatrixColumnStretched) {
  ScoreMatrix matrix = small_matrix();
  const Sequence query(matrix, "AAA");
  const Params p = params();
  LookupTable table = make_table<int32_t>(matrix.inlen, query.record.len, 0);
  LookupTable count = make_table<int32_t>(matrix.inlen, query.record.len, 0);
  calc_profile(query.codes.data(), query.record.len, matrix, table, count, &p);
  for (int32_t i = 1; i <= 3; ++i) {
    EXPECT_EQ(table[0][i], 900);   // 407 / 407 x 900
    EXPECT_EQ(table[1][i], -233);  // the extreme -1000 of the stop row is the matrix's own
    EXPECT_EQ(table[2][i], -101);
  }
}

// The quotient is truncated before it is stretched, and both roundings go toward zero.
TEST(CalcProfile, TruncatesTwiceTowardZero) {
  ScoreMatrix matrix = matrix_of("AX", 0);
  matrix.pairscore[0][0] = 1000;
  matrix.pairscore[1][0] = -7;
  matrix.pairscore[1][1] = -2;
  set_extremes(matrix);
  const Sequence query(matrix, "AX");
  const Params p = params();
  LookupTable table = make_table<int32_t>(matrix.inlen, query.record.len, 0);
  LookupTable count = make_table<int32_t>(matrix.inlen, query.record.len, 0);
  count[1][1] = 1;  // X opposite A: row X has (-7 - 2) / 2 = -4 there, row A 500
  count[0][2] = 2;  // A twice opposite X: row X has (-14 - 2) / 3 = -5, row A 666
  calc_profile(query.codes.data(), 4, matrix, table, count, &p);
  // The lowest entry is the gap row's ln(1/2) x 100 = -69 at position 0, the bound -7.
  EXPECT_EQ(table[2][0], -7);
  EXPECT_EQ(table[1][1], 0);    // -4 / -69 x -7 = -0.41
  EXPECT_EQ(table[0][1], 750);  // 500 / 666 x 1000 = 750.75
  EXPECT_EQ(table[0][2], 1000);
}

}  // namespace
