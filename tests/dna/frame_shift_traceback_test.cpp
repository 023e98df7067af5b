#include "dna/frame_shift_traceback.h"

#include <gtest/gtest.h>

#include <string>

#include "dna/frame_problem.h"
#include "dna/frame_shift_reference.h"

namespace {

// What a path scores when its steps are charged one by one; also where it ends.
struct Walk {
  int32_t score = 0;
  int32_t row, base;  // the next ones
};

Walk walk(const FramePath& path, const Codes& rows, const LookupTable& table, const Penalties& pen) {
  Walk at = {0, path.first_row, path.first_base};
  FrameStep before = FrameStep::MATCH;
  for (const FrameStep step : path.steps) {
    const int32_t gap = step == before ? pen.ld : pen.li;
    switch (step) {
      case FrameStep::MATCH:
        at.score += table[rows[static_cast<std::size_t>(at.row++)]][at.base];
        at.base += 3;
        break;
      case FrameStep::NO_CODON:
        at.score -= gap;
        ++at.row;
        break;
      case FrameStep::NO_RESIDUE:
        at.score -= gap;
        at.base += 3;
        break;
      case FrameStep::FRAME_SHIFT:
        at.score -= pen.fs;
        ++at.base;
    }
    before = step;
  }
  return at;
}

std::string letters(const FramePath& path) {
  std::string text;
  for (const FrameStep step : path.steps) text += "M-+f"[static_cast<std::size_t>(step)];
  return text;
}

TEST(FrameShiftTraceback, EveryPathHasTheScoreOfTheKernel) {
  Random random(1);
  MoveFlags flags;
  int32_t with_shift = 0;
  for (int32_t round = 0; round < 4000; ++round) {
    const Codes columns = random_codes(random, uniform(random, 0, 40));
    const Codes rows = random_codes(random, uniform(random, 0, 15));
    const LookupTable table = table_of(columns, random_scores(random));
    Penalties pen = random_penalties(random, round % 4 == 0 ? -2 : 0);
    const bool linear = round % 2 == 0;
    if (linear) pen.li = pen.ld;
    const int32_t m = length(columns);
    const FramePath path = trace_frames(m, rows.data(), length(rows), table, pen.ld, pen.li, pen.fs,
                                        uniform(random, -1, 12), flags);
    const int32_t expected = linear ? npswl(m, rows.data(), length(rows), table, pen.ld, pen.fs)
                                    : npswli2(m, rows.data(), length(rows), table, pen.ld, pen.li, pen.fs);
    ASSERT_EQ(path.score, expected) << round << " " << pen;
    ASSERT_EQ(path.steps.empty(), expected <= 0);
    if (path.steps.empty()) continue;
    const Walk end = walk(path, rows, table, pen);
    ASSERT_EQ(end.score, expected) << round << " " << pen << " " << letters(path);
    ASSERT_GE(path.first_row, 1);
    ASSERT_GE(path.first_base, 1);
    ASSERT_LE(end.row, length(rows) - 1);
    ASSERT_LE(end.base, m - 1 + 2);  // the last two columns begin codons without all their bases
    with_shift += letters(path).find('f') != std::string::npos ? 1 : 0;
  }
  EXPECT_GT(with_shift, 500);
}

// Residues 0 1 2 3 in frame, then one base too many, then 4 5 6 7 (codes 0..7; 8 matches nothing).
struct Gene {
  Codes dna;
  LookupTable table;
};

Gene gene(const Codes& spelled) {
  Gene made = {stored(spelled), {}};
  made.table = make_table<int32_t>(9, length(made.dna), -50);
  for (int32_t j = 1; j <= length(made.dna) - 2; ++j) {
    const int8_t code = made.dna[static_cast<std::size_t>(j)];
    if (code != 8) made.table[code][j] = 20;
  }
  return made;
}

TEST(FrameShiftTraceback, ShowsThePlantedShift) {
  const Gene made = gene({8, 0, 8, 8, 1, 8, 8, 2, 8, 8, 3, 8, 8, 8, 4, 8, 8, 5, 8, 8});
  const Codes protein = stored({0, 1, 2, 3, 4, 5});
  MoveFlags flags;
  const FramePath path =
      trace_frames(length(made.dna), protein.data(), length(protein), made.table, 1, 12, 15, 15, flags);
  EXPECT_EQ(path.score, 6 * 20 - 15);
  EXPECT_EQ(letters(path), "MMMMfMM");
  EXPECT_EQ(path.first_row, 1);
  EXPECT_EQ(path.first_base, 2);
}

// A lost base: residue 2 has two bases only. Two shifts and a gap have the same score in any order.
TEST(FrameShiftTraceback, ShiftsStayTogetherUnlessExtensionIsDearer) {
  const Gene made = gene({0, 8, 8, 1, 8, 8, 8, 8, 3, 8, 8, 4, 8, 8, 5, 8, 8});
  const Codes protein = stored({0, 1, 2, 3, 4, 5});
  MoveFlags flags;
  const auto path = [&](int32_t fse) {
    return trace_frames(length(made.dna), protein.data(), length(protein), made.table, 1, 4, 5, fse, flags);
  };
  EXPECT_EQ(letters(path(5)), "MM-ffMMM");
  EXPECT_EQ(letters(path(6)), "MMf-fMMM");
  EXPECT_EQ(path(5).score, path(6).score);
}

TEST(FrameShiftTraceback, OfEqualsTheFirstIsTaken) {
  const Gene made = gene({0, 8, 8, 8, 8, 8, 8, 0, 8, 8});
  const Codes protein = stored({0, 8, 8, 0});
  MoveFlags flags;
  const FramePath path =
      trace_frames(length(made.dna), protein.data(), length(protein), made.table, 9, 9, 99, 99, flags);
  EXPECT_EQ(letters(path), "M");
  EXPECT_EQ(path.first_row, 1);
  EXPECT_EQ(path.first_base, 1);
}

}  // namespace
