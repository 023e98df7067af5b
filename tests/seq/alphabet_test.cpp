#include "seq/alphabet.h"

#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/small_alphabet.h"

namespace {

// An alphabet with a gap in it: no B, and a lower-case letter that stands for itself.
ScoreMatrix gapped_alphabet() {
  return small_matrix("ACXa", [](int32_t a, int32_t b) { return 10 * a - b; });
}

TEST(Alphabet, EncodesAndDecodesAllButTheTerminator) {
  const ScoreMatrix matrix = gapped_alphabet();
  UTvector<int8_t> every_byte(258, 'A');
  for (int i = 0; i < 256; ++i) every_byte[static_cast<std::size_t>(i)] = static_cast<int8_t>(i);
  for (const int32_t len : {-1, 0, 1, 2, 3, 256, 257}) {
    UTvector<int8_t> bytes = every_byte;
    EXPECT_EQ(seqtoi(bytes.data(), len, matrix), bytes.data());
    UTvector<int8_t> codes = bytes;
    EXPECT_EQ(itoseq(bytes.data(), len, matrix), bytes.data());
    UTvector<char> letters(258, 'A');
    itoseq2(letters.data(), codes.data(), len, matrix);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const bool converted = static_cast<int32_t>(i) <= len - 2;
      const auto place = matrix.indx.find(static_cast<char>(every_byte[i]));
      const bool known = place != UTstring::npos;
      EXPECT_EQ(codes[i], !converted ? every_byte[i] : static_cast<int8_t>(known ? place : 2)) << i;
      EXPECT_EQ(bytes[i], converted && !known ? 'X' : every_byte[i]) << i;
      EXPECT_EQ(letters[i], converted ? static_cast<char>(bytes[i]) : 'A') << i;
    }
  }
}

TEST(Alphabet, PrintedMatrixLeavesOutTheFirstRowAndColumn) {
  ScoreMatrix matrix = gapped_alphabet();
  matrix.inlen = 3;
  EXPECT_EQ(written([&](FILE* stream) { PrintMatrix(matrix, stream); }),
            "TITLE:a small matrix\nINDEX:ACXa ^:!\nINLEN:3\n  9  8\n 19 18\n");
}

}  // namespace
