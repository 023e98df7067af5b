#include "dna/frame_shift_reference.h"

#include <gtest/gtest.h>

#include "dna/frame_problem.h"
#include "seq/sequence_file.h"

namespace {

// The best cell straight from the definition, all cells kept. One step along the protein and three along the
// translated sequence, which may be the rows or the columns.
int32_t best_by_definition(const FrameProblem& problem, bool translated_rows, int32_t li_pen) {
  struct Cell {
    int32_t h = 0;
    bool up = false, left = false;
  };
  constexpr int32_t EDGE = 3;
  const int32_t n = problem.n(), m = problem.m();
  const Penalties& pen = problem.pen;
  std::vector<std::vector<Cell>> cells(static_cast<std::size_t>(n + EDGE),
                                       std::vector<Cell>(static_cast<std::size_t>(m + EDGE)));
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
      const int32_t score = problem.table[problem.rows[static_cast<std::size_t>(i)]][j];
      const int32_t diagonal = cell(i - di, j - dj).h + score;
      const int32_t up = above.h - (above.up ? pen.ld : li_pen);
      const int32_t left = before.h - (before.left ? pen.ld : li_pen);
      const int32_t shift = (translated_rows ? cell(i - 1, j) : cell(i, j - 1)).h - pen.fs;
      const int32_t h = std::max({0, diagonal, up, left, shift});
      cell(i, j) = {h, h == up, h == left};
      best = std::max(best, h);
    }
  }
  return best;
}

void expect_definition(const FrameProblem& problem) {
  EXPECT_EQ(problem.rows_translated(), best_by_definition(problem, true, problem.pen.li)) << problem;
  EXPECT_EQ(problem.affine(), best_by_definition(problem, false, problem.pen.li)) << problem;
  EXPECT_EQ(problem.linear(), best_by_definition(problem, false, problem.pen.ld)) << problem;
}

TEST(FrameShiftKernels, FollowTheirDefinition) {
  Random random(1);
  for (int32_t round = 0; round < 3000; ++round) {
    expect_definition(random_frame_problem(random, uniform(random, 0, 14), uniform(random, 0, 14),
                                           round % 4 == 0 ? -3 : 0));
  }
}

// A call leaves nothing behind that a later one could read.
TEST(FrameShiftKernels, UseTheWholeWidthAndForgetTheLastCall) {
  Random random(4);
  expect_definition(random_frame_problem(random, MP_LEN - 2, 12, 1));
  expect_definition(random_frame_problem(random, 40, 12, 1));
}

// Ten different codes along the diagonal, each in frame, and what an error in the DNA costs.
TEST(FrameShiftKernels, PlantedErrorsHaveTheirPrice) {
  constexpr int32_t LD = 7, LI = 30, FS = 40, MATCH = 100;
  // The interleaved frames of the gene with `bases` bases more (or less) behind its fifth codon.
  const auto gene = [](int32_t bases) {
    Codes codes;
    for (int8_t k = 0; k < 10; ++k) {
      codes.push_back(k);
      codes.insert(codes.end(), k == 4 ? static_cast<std::size_t>(2 + bases) : 2U, NOTHING);
    }
    return codes;
  };
  // A codon of two bases spells no residue: both are passed over, and a gap stands for the residue.
  Codes one_base_less = gene(0);
  one_base_less.erase(one_base_less.begin() + 15);
  one_base_less[15] = NOTHING;
  const Codes protein = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  const Codes two_residues_less = {0, 1, 2, 3, 6, 7, 8, 9};
  const struct {
    Codes dna, protein;
    int32_t affine, linear;
  } cases[] = {
      {gene(0), protein, 10 * MATCH, 10 * MATCH},
      {gene(1), protein, 10 * MATCH - FS, 10 * MATCH - FS},
      {gene(2), protein, 10 * MATCH - 2 * FS, 10 * MATCH - 2 * FS},
      {gene(9), protein, 10 * MATCH - LI - 2 * LD, 10 * MATCH - 3 * LD},
      {one_base_less, protein, 9 * MATCH - 2 * FS - LI, 9 * MATCH - 2 * FS - LD},
      {gene(0), two_residues_less, 8 * MATCH - LI - LD, 8 * MATCH - 2 * LD},
  };
  const Table<int32_t> scores = match_scores(MATCH, -200);
  for (const auto& c : cases) {
    const FrameProblem columns_translated(c.dna, c.protein, scores, {LD, LI, FS});
    const FrameProblem rows_translated(c.protein, c.dna, scores, {LD, LI, FS});
    EXPECT_EQ(columns_translated.affine(), c.affine) << columns_translated;
    EXPECT_EQ(columns_translated.linear(), c.linear) << columns_translated;
    EXPECT_EQ(rows_translated.rows_translated(), c.affine) << rows_translated;
  }
}

TEST(FrameShiftKernels, CountRowsAndColumnsFromTheStoredLengths) {
  const Codes codes = stored({0, 0, 0});
  const LookupTable table = make_table<int32_t>(1, 5, 600);
  const struct { int32_t m, n, expected; } cases[] = {{3, 3, 600}, {3, 2, -1}, {2, 5, -1}, {5, 2, -1}};
  for (const auto& c : cases) {
    EXPECT_EQ(nswli(c.m, codes.data(), c.n, table, 1, 1, 1), c.expected) << c.m << " x " << c.n;
    EXPECT_EQ(npswli2(c.m, codes.data(), c.n, table, 1, 1, 1), c.expected) << c.m << " x " << c.n;
    EXPECT_EQ(npswl(c.m, codes.data(), c.n, table, 1, 1), c.expected) << c.m << " x " << c.n;
  }
}

}  // namespace
