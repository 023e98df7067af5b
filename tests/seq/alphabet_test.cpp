#include "seq/alphabet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "seq_data.h"
#include "support/capture.h"

namespace {

// An alphabet with a gap in it: no B, and a lower-case letter that stands for itself.
ScoreMatrix small_matrix() {
  ScoreMatrix matrix;
  matrix.title = "small";
  matrix.indx = "ACXa ^:!";
  matrix.inlen = 8;
  matrix.xindex.fill(2);
  for (int8_t code = 0; code < 8; ++code) {
    matrix.xindex[static_cast<std::size_t>(matrix.indx[static_cast<std::size_t>(code)])] = code;
  }
  matrix.xindex[127] = 0;  // not in use
  matrix.pairscore = make_table<int32_t>(8, 8, 0);
  for (int32_t i = 0; i < 8; ++i) {
    for (int32_t j = 0; j < 8; ++j) matrix.pairscore[i][j] = 10 * i - j;
  }
  return matrix;
}

TEST(Seqtoi, EncodesEveryByte) {
  const ScoreMatrix matrix = small_matrix();
  int8_t buffer[258];
  for (int i = 0; i < 256; ++i) buffer[i] = static_cast<int8_t>(i);
  buffer[256] = buffer[257] = 'A';
  EXPECT_EQ(seqtoi(buffer, 257, matrix), buffer);
  for (int i = 0; i < 256; ++i) {
    const auto* at = i == 0 ? nullptr : std::strchr(matrix.indx.c_str(), i);
    EXPECT_EQ(buffer[i], at == nullptr ? 2 : at - matrix.indx.c_str()) << i;
  }
  EXPECT_EQ(buffer[256], 'A');  // the terminator's place, and what follows
  EXPECT_EQ(buffer[257], 'A');
}

TEST(Seqtoi, ConvertsPadAndResiduesOnly) {
  const ScoreMatrix matrix = small_matrix();
  const struct {
    int32_t len;
    const char* letters_after;
  } cases[] = {{-1, " ABx"}, {0, " ABx"}, {1, " ABx"}, {2, " ABx"}, {3, " ABx"}, {4, " AXx"}, {5, " AXX"}};
  for (const auto& c : cases) {
    char letters[] = " ABx";
    auto* seq = reinterpret_cast<int8_t*>(letters);
    seqtoi(seq, c.len, matrix);
    for (int32_t i = 0; i < 4; ++i) {
      EXPECT_EQ(seq[i] < 8, i <= c.len - 2) << c.len << " " << i;
    }
    EXPECT_EQ(itoseq(seq, c.len, matrix), seq);
    EXPECT_STREQ(letters, c.letters_after) << c.len;
  }
}

TEST(Itoseq2, WritesLettersAndKeepsTheCodes) {
  const ScoreMatrix matrix = small_matrix();
  const int8_t codes[] = {4, 0, 1, 2, 7, 0};
  for (int repeat = 0; repeat < 2; ++repeat) {
    char letters[] = "......";
    EXPECT_EQ(itoseq2(letters, codes, 6, matrix), letters);
    EXPECT_STREQ(letters, " ACX!.");
  }
}

TEST(EncodeSequences, EncodesEachRecord) {
  const ScoreMatrix matrix = small_matrix();
  SeqStore store;
  SeqRec records[] = {store_sequence(store, "a", 1, "-", 1, "CA", 2),
                      store_sequence(store, "b", 1, "-", 1, "", 0),
                      store_sequence(store, "c", 1, "-", 1, "Z", 1)};
  encode_sequences(records, 2, matrix);
  const int8_t first[] = {4, 1, 0, 0};
  EXPECT_TRUE(std::equal(first, first + 4, records[0].seq));
  EXPECT_EQ(records[1].seq[0], 4);
  EXPECT_EQ(texts_of(records[2]).residues, "Z");  // beyond n
}

TEST(PrintMatrix, LeavesOutTheFirstRowAndColumn) {
  ScoreMatrix matrix = small_matrix();
  matrix.inlen = 3;
  EXPECT_EQ(written([&](FILE* stream) { PrintMatrix(matrix, stream); }),
            "TITLE:small\nINDEX:ACXa ^:!\nINLEN:3\n  9  8\n 19 18\n");
}

}  // namespace
