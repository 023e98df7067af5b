#include "align/lookup.h"

#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/small_alphabet.h"

// Rows are query codes: A scores A 1, B 2, X 3; B scores A 10, B 20, X 30; X -47 throughout.
TEST(Lookup, PrintsTheQuerysRowsOfTheMatrix) {
  const ScoreMatrix matrix = small_matrix("ABX", [](int32_t query, int32_t target) {
    const int32_t row[] = {1, 10, 0};
    return query == 2 ? -47 : row[query] * (target + 1);
  });
  Params p = small_params(200);
  p.PRECISION = 10;
  const Codes query = encoded("BXA", matrix);
  const LookupTable table = mlook(query.data(), 5, matrix);
  EXPECT_EQ(written([&](FILE* stream) { PrintLookup3(5, table, matrix, stream); }),
            "Posn:   A   B   X       ^   :   !\n"
            "   1:  10  20  30   0   0   0   0\n"
            "   2: -47 -47 -47   0   0   0   0\n"
            "   3:   1   2   3   0   0   0   0\n");
  EXPECT_EQ(written([&](FILE* stream) { PrintLookup4(3, table, matrix, stream, &p); }),
            "Posn:   A   B   X       ^   :   !\n"
            "   1:   1   2   3   0   0   0   0\n");
}
