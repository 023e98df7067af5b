#include "seq/residue_reader.h"

#include <gtest/gtest.h>

#include <random>

#include "seq/alphabet.h"
#include "seq/composition.h"
#include "support/small_alphabet.h"

namespace zelvan {
namespace {

// Pairs and whatever is left over from them, against one byte at a time.
TEST(PairsOfResidues, AreEncodedAndCountedLikeSingleOnes) {
  const ScoreMatrix matrix = match_or_not("ARNDCQEGHILKMFPSTWYVBZX", 5, -1);
  const PairCodes pairs = make_pair_codes(matrix);
  std::mt19937 random(2);
  ByteCounts counts{}, expected_counts{}, letter_counts{};
  for (int32_t len = 2; len < 40; ++len) {
    UTvector<int8_t> letters(static_cast<std::size_t>(len), ' ');
    for (int32_t i = 1; i < len - 1; ++i) {
      letters[static_cast<std::size_t>(i)] = static_cast<int8_t>(1 + random() % 255);  // of any kind
    }
    letters.back() = 0;
    UTvector<int8_t> expected = letters, copied(letters.size(), 99), in_place = letters;
    seqtoi(expected.data(), len, matrix);
    encode_pairs(letters.data(), len, pairs, copied.data());
    encode_pairs(in_place.data(), len, pairs, in_place.data());
    EXPECT_EQ(copied, expected) << len;
    EXPECT_EQ(in_place, expected) << len;

    SeqRec coded, read;
    coded.len = read.len = len;
    coded.seq = expected.data();
    read.seq = letters.data();
    count_residues(&coded, 1, counts);
    count_residues(&read, 1, letter_counts);
    for (int32_t i = 1; i < len - 1; ++i) {
      ++expected_counts[static_cast<uint8_t>(expected[static_cast<std::size_t>(i)])];
    }
  }
  EXPECT_EQ(counts, expected_counts);
  EXPECT_EQ(codes_from_letters(letter_counts, matrix), expected_counts);
}

}  // namespace
}  // namespace zelvan
