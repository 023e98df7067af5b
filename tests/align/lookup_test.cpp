#include "align/lookup.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"

namespace {

// Rows are query codes: A scores A 1, B 2, X 3; B scores A 10, B 20, X 30; X -47 throughout.
ScoreMatrix asymmetric() {
  return small_matrix("ABX", [](int32_t query, int32_t target) {
    const int32_t row[] = {1, 10, 0};
    return query == 2 ? -47 : row[query] * (target + 1);
  });
}

}  // namespace

TEST(Lookup, ReadsTheQuerysRowOfTheMatrix) {
  const ScoreMatrix matrix = asymmetric();
  const Codes query = encoded("ABX", matrix);
  const LookupTable table = mlook(query.data(), stored_length(query), matrix);
  ASSERT_EQ(table.rows, 7);
  ASSERT_EQ(table.cols, 5);
  const int32_t expected[3][4] = {{0, 1, 10, -47}, {0, 2, 20, -47}, {0, 3, 30, -47}};
  for (int32_t c = 0; c < 3; ++c) {
    for (int32_t i = 0; i < 4; ++i) EXPECT_EQ(table[c][i], expected[c][i]) << c << " " << i;
  }
}

TEST(Lookup, GapRowsHoldThePenalties) {
  ScoreMatrix matrix = asymmetric();
  const Params p = small_params(200);
  const Codes query = encoded("B", matrix);
  const int8_t gap = residue_code(matrix, ' '), insertion = residue_code(matrix, ':');
  for (int32_t a = 0; a < matrix.inlen; ++a) matrix.pairscore[a][gap] = matrix.pairscore[a][insertion] = 99;
  const LookupTable table = mlookgap(query.data(), 3, matrix, 7, 11, &p);
  ASSERT_EQ(table.cols, 3);
  for (int32_t i = 0; i < 2; ++i) {
    EXPECT_EQ(table[gap][i], 7);
    EXPECT_EQ(table[insertion][i], 11);
  }
  EXPECT_EQ(table[1][1], 20);
}

TEST(Lookup, CountsStartAtZeroAndTablesAreReleased) {
  const ScoreMatrix matrix = asymmetric();
  LookupTable counts = simple_look(6, matrix);
  EXPECT_EQ(counts.rows, matrix.inlen);
  EXPECT_EQ(counts.cols, 6);
  for (const int32_t count : counts.cells) EXPECT_EQ(count, 0);
  FreeLookup(counts);
  EXPECT_EQ(counts.cells.capacity(), 0u);
}

TEST(Lookup, PrintsByteForByte) {
  const ScoreMatrix matrix = asymmetric();
  Params p = small_params(200);
  p.PRECISION = 10;
  const Codes query = encoded("BX", matrix);
  LookupTable table = mlook(query.data(), 4, matrix);
  table[1][0] = 47;
  EXPECT_EQ(written([&](FILE* stream) { PrintLookup2(4, table, matrix, stream, &p); }),
            "      A  B  X     ^  :  !\n"
            "   0:  0  4  0  0  0  0  0\n"
            "   1:  1  2  3  0  0  0  0\n"
            "   2: -4 -4 -4  0  0  0  0\n");
  EXPECT_EQ(written([&](FILE* stream) { PrintLookup3(4, table, matrix, stream); }),
            "Posn:   A   B   X       ^   :   !\n"
            "   1:  10  20  30   0   0   0   0\n"
            "   2: -47 -47 -47   0   0   0   0\n");
  EXPECT_EQ(written([&](FILE* stream) { PrintLookup4(4, table, matrix, stream, &p); }),
            "Posn:   A   B   X       ^   :   !\n"
            "   1:   1   2   3   0   0   0   0\n"
            "   2:  -4  -4  -4   0   0   0   0\n");
}
