#include "dna/frame_shift_reference.h"

#include <gtest/gtest.h>

#include <functional>

#include "align/scan_reference.h"
#include "dna/frame_problem.h"
#include "seq/sequence_file.h"

namespace {

// The best cell straight from the definition, all cells kept. One step along the protein and `codon` steps
// along the translated sequence, which may be the rows or the columns.
int32_t best_by_definition(bool translated_rows, const Codes& rows, int32_t n, int32_t m,
                           const LookupTable& table, const Penalties& pen) {
  struct Cell {
    int32_t h = 0;
    bool up = false, left = false;
  };
  constexpr int32_t EDGE = 3;
  std::vector<std::vector<Cell>> cells(static_cast<std::size_t>(std::max(n, 2) + EDGE),
                                       std::vector<Cell>(static_cast<std::size_t>(std::max(m, 2) + EDGE)));
  const auto cell = [&](int32_t i, int32_t j) -> Cell& {
    return cells[static_cast<std::size_t>(i + EDGE)][static_cast<std::size_t>(j + EDGE)];
  };
  const int32_t di = translated_rows ? 3 : 1;
  const int32_t dj = translated_rows ? 1 : 3;
  int32_t best = -1;
  for (int32_t i = 1; i <= n - 2; ++i) {
    for (int32_t j = 1; j <= m - 2; ++j) {
      const Cell& above = cell(i - di, j);
      const Cell& before = cell(i, j - dj);
      const int32_t diagonal = cell(i - di, j - dj).h + table[rows[static_cast<std::size_t>(i)]][j];
      const int32_t up = above.h - (above.up ? pen.ld : pen.li);
      const int32_t left = before.h - (before.left ? pen.ld : pen.li);
      const int32_t shift = (translated_rows ? cell(i - 1, j) : cell(i, j - 1)).h - pen.fs;
      const int32_t h = std::max({0, diagonal, up, left, shift});
      cell(i, j) = {h, h == up, h == left};
      best = std::max(best, h);
    }
  }
  return best;
}

// The best score of all paths, by trying every one: linear gaps, columns translated, penalties not negative.
int32_t best_by_enumeration(const Codes& rows, int32_t m, const LookupTable& table, const Penalties& pen) {
  int32_t best = 0;
  const std::function<void(int32_t, int32_t, int32_t)> walk = [&](int32_t i, int32_t j, int32_t score) {
    best = std::max(best, score);
    const bool row_left = i + 1 <= length(rows) - 2;
    if (row_left && j + 3 <= m - 2)
      walk(i + 1, j + 3, score + table[rows[static_cast<std::size_t>(i + 1)]][j + 3]);
    if (row_left) walk(i + 1, j, score - pen.ld);
    if (j + 3 <= m - 2) walk(i, j + 3, score - pen.ld);
    if (j + 1 <= m - 2) walk(i, j + 1, score - pen.fs);
  };
  for (int32_t i = 0; i <= length(rows) - 2; ++i) {
    for (int32_t j = -2; j <= m - 2; ++j) walk(i, j, 0);
  }
  return best;
}

// Positions start, start + 3, ... of a stored sequence.
Codes frame_of(const Codes& codes, std::size_t start) {
  Codes frame;
  for (std::size_t k = start; k + 1 < codes.size(); k += 3) frame.push_back(codes[k]);
  return stored(frame);
}

TEST(FrameShiftKernels, FollowTheirDefinition) {
  Random random(1);
  for (int32_t round = 0; round < 3000; ++round) {
    const Codes columns = random_codes(random, uniform(random, 0, 14));
    const Codes rows = random_codes(random, uniform(random, 0, 14));
    const Scores scores = random_scores(random);
    const LookupTable table = table_of(columns, scores);
    const Penalties pen = random_penalties(random, round % 4 == 0 ? -3 : 0);
    const int32_t m = length(columns);
    const int32_t n = length(rows);
    EXPECT_EQ(nswli(m, rows.data(), n, table, pen.ld, pen.li, pen.fs),
              best_by_definition(true, rows, n, m, table, pen))
        << round << " " << pen;
    EXPECT_EQ(npswli2(m, rows.data(), n, table, pen.ld, pen.li, pen.fs),
              best_by_definition(false, rows, n, m, table, pen))
        << round << " " << pen;
    EXPECT_EQ(npswl(m, rows.data(), n, table, pen.ld, pen.fs),
              best_by_definition(false, rows, n, m, table, {pen.ld, pen.ld, pen.fs}))
        << round << " " << pen;
  }
}

TEST(FrameShiftKernels, FindTheBestOfAllPaths) {
  Random random(2);
  for (int32_t round = 0; round < 60; ++round) {
    const Codes columns = random_codes(random, uniform(random, 1, 7));
    const Codes rows = random_codes(random, uniform(random, 1, 4));
    const LookupTable table = table_of(columns, random_scores(random));
    const Penalties pen = random_penalties(random, 0);
    EXPECT_EQ(npswl(length(columns), rows.data(), length(rows), table, pen.ld, pen.fs),
              best_by_enumeration(rows, length(columns), table, pen))
        << round;
  }
}

TEST(FrameShiftKernels, WithoutShiftsGiveTheBestOfThreeFrames) {
  Random random(3);
  constexpr int32_t NEVER = 1'000'000;
  for (int32_t round = 0; round < 300; ++round) {
    const Codes dna = random_codes(random, uniform(random, 3, 40));
    const Codes protein = random_codes(random, uniform(random, 1, 15));
    const Scores scores = random_scores(random);
    const Penalties pen = random_penalties(random, 0);
    const LookupTable dna_table = table_of(dna, scores);
    const LookupTable protein_table = table_of(protein, scores);
    int32_t linear = -1, affine = -1, rows_translated = -1;
    for (std::size_t start = 1; start <= 3; ++start) {
      const Codes frame = frame_of(dna, start);
      const LookupTable table = table_of(frame, scores);
      linear = std::max(linear, swl(length(frame), protein.data(), length(protein), table, pen.ld));
      affine = std::max(affine, swli(length(frame), protein.data(), length(protein), table, pen.ld, pen.li));
      rows_translated = std::max(
          rows_translated, swli(length(protein), frame.data(), length(frame), protein_table, pen.ld, pen.li));
    }
    const int32_t m = length(dna);
    EXPECT_EQ(npswl(m, protein.data(), length(protein), dna_table, pen.ld, NEVER), linear);
    EXPECT_EQ(npswli2(m, protein.data(), length(protein), dna_table, pen.ld, pen.li, NEVER), affine);
    EXPECT_EQ(nswli(length(protein), dna.data(), m, protein_table, pen.ld, pen.li, NEVER), rows_translated);
  }
}

// A sequence of ten different codes along the diagonal, each in frame, and what an error in the DNA costs.
class PlantedGene : public testing::Test {
 protected:
  static constexpr int32_t COUNT = 10;
  static constexpr int32_t MATCH = 100;
  static constexpr Penalties PEN = {7, 30, 40};
  static constexpr int8_t NOTHING = COUNT;

  // The interleaved frames of a gene with `bases` bases more (or less) behind its fifth codon.
  static Codes gene(int32_t bases) {
    Codes residues;
    for (int8_t k = 0; k < COUNT; ++k) {
      residues.push_back(k);
      residues.insert(residues.end(), k == 4 ? static_cast<std::size_t>(2 + bases) : 2U, NOTHING);
    }
    return stored(residues);
  }
  static Codes protein() {
    Codes residues;
    for (int8_t k = 0; k < COUNT; ++k) residues.push_back(k);
    return stored(residues);
  }
  static LookupTable table(const Codes& columns) {
    LookupTable scores = make_table<int32_t>(COUNT + 1, length(columns), -200);
    for (int32_t j = 1; j <= length(columns) - 2; ++j) {
      const int8_t code = columns[static_cast<std::size_t>(j)];
      if (code != NOTHING) scores[code][j] = MATCH;
    }
    return scores;
  }
  static void expect_scores(const Codes& dna, const Codes& residues, int32_t affine, int32_t linear) {
    EXPECT_EQ(npswli2(length(dna), residues.data(), length(residues), table(dna), PEN.ld, PEN.li, PEN.fs),
              affine);
    EXPECT_EQ(nswli(length(residues), dna.data(), length(dna), table(residues), PEN.ld, PEN.li, PEN.fs),
              affine);
    EXPECT_EQ(npswl(length(dna), residues.data(), length(residues), table(dna), PEN.ld, PEN.fs), linear);
  }
};

TEST_F(PlantedGene, ScoresEveryResidue) {
  expect_scores(gene(0), protein(), COUNT * MATCH, COUNT * MATCH);
}

TEST_F(PlantedGene, AnInsertedBaseCostsOneShift) {
  expect_scores(gene(1), protein(), COUNT * MATCH - PEN.fs, COUNT * MATCH - PEN.fs);
  expect_scores(gene(2), protein(), COUNT * MATCH - 2 * PEN.fs, COUNT * MATCH - 2 * PEN.fs);
}

// A codon of two bases spells no residue: both are passed over, and a gap stands for the residue.
TEST_F(PlantedGene, ADeletedBaseCostsTwoShiftsAndAResidue) {
  Codes dna = gene(0);
  dna.erase(dna.begin() + 1 + 3 * 5, dna.begin() + 1 + 3 * 5 + 1);
  dna[1 + 3 * 5] = NOTHING;
  expect_scores(dna, protein(), (COUNT - 1) * MATCH - 2 * PEN.fs - PEN.li,
                (COUNT - 1) * MATCH - 2 * PEN.fs - PEN.ld);
}

TEST_F(PlantedGene, AGapOfCodonsIsOpenedOnceAndExtended) {
  expect_scores(gene(9), protein(), COUNT * MATCH - PEN.li - 2 * PEN.ld, COUNT * MATCH - 3 * PEN.ld);
  Codes shorter = protein();
  shorter.erase(shorter.begin() + 4, shorter.begin() + 6);
  expect_scores(gene(0), shorter, (COUNT - 2) * MATCH - PEN.li - PEN.ld, (COUNT - 2) * MATCH - 2 * PEN.ld);
}

TEST(FrameShiftKernels, CountRowsAndColumnsFromTheStoredLengths) {
  const Codes one = stored({0});
  const Codes three = stored({0, 0, 0});
  const LookupTable table = make_table<int32_t>(1, 5, 600);
  // Mode 10 hands over the length without its last two positions: three bases are one row, two are none.
  EXPECT_EQ(nswli(3, three.data(), length(three) - 2, table, 1, 1, 1), 600);
  EXPECT_EQ(nswli(3, three.data(), length(three) - 3, table, 1, 1, 1), -1);
  EXPECT_EQ(nswli(3, one.data(), length(one), table, 1, 1, 1), 600);
  EXPECT_EQ(nswli(2, three.data(), length(three), table, 1, 1, 1), -1);
  EXPECT_EQ(npswli2(3, one.data(), length(one), table, 1, 1, 1), 600);
  EXPECT_EQ(npswli2(2, one.data(), length(one), table, 1, 1, 1), -1);
  EXPECT_EQ(npswl(5, one.data(), 2, table, 1, 1), -1);
}

TEST(FrameShiftKernels, UseTheWholeWidthAndForgetTheLastCall) {
  Random random(4);
  const Codes widest = random_codes(random, MP_LEN - 2);
  const Codes rows = random_codes(random, 12);
  const Scores scores = random_scores(random);
  const LookupTable wide_table = table_of(widest, scores);
  const LookupTable table = table_of(random_codes(random, 40), scores);
  const auto three_scores = [&] {
    return std::vector<int32_t>{nswli(42, rows.data(), length(rows), table, 1, 3, 4),
                                npswli2(42, rows.data(), length(rows), table, 1, 3, 4),
                                npswl(42, rows.data(), length(rows), table, 1, 4)};
  };
  const std::vector<int32_t> before = three_scores();
  EXPECT_EQ(nswli(MP_LEN, rows.data(), length(rows), wide_table, 1, 3, 4),
            best_by_definition(true, rows, length(rows), MP_LEN, wide_table, {1, 3, 4}));
  EXPECT_EQ(npswli2(MP_LEN, rows.data(), length(rows), wide_table, 1, 3, 4),
            best_by_definition(false, rows, length(rows), MP_LEN, wide_table, {1, 3, 4}));
  EXPECT_EQ(npswl(MP_LEN, rows.data(), length(rows), wide_table, 2, 4),
            best_by_definition(false, rows, length(rows), MP_LEN, wide_table, {2, 2, 4}));
  EXPECT_EQ(three_scores(), before);
}

}  // namespace
