#include "dna/frame_shift_traceback.h"

#include <gtest/gtest.h>

#include <string>

#include "dna/frame_problem.h"

namespace zelvan {
namespace {

// What a path scores when its steps are charged one by one, and where it ends.
struct Walk {
  int32_t score = 0;
  int32_t row, base;  // the next ones
};

Walk walk(const FramePath& path, const FrameProblem& problem) {
  Walk at = {0, path.first_row, path.first_base};
  FrameStep before = FrameStep::MATCH;
  for (const FrameStep step : path.steps) {
    const bool match = step == FrameStep::MATCH, shift = step == FrameStep::FRAME_SHIFT;
    if (match) {
      at.score += problem.table[problem.rows[static_cast<std::size_t>(at.row)]][at.base];
    } else {
      at.score -= shift ? problem.pen.fs : step == before ? problem.pen.ld : problem.pen.li;
    }
    at.row += match || step == FrameStep::NO_CODON ? 1 : 0;
    at.base += shift ? 1 : step == FrameStep::NO_CODON ? 0 : 3;
    before = step;
  }
  return at;
}

FramePath traced(const FrameProblem& problem, int32_t fse_pen) {
  static MoveFlags flags;  // reused from call to call
  return trace_frames(problem.qlen(), problem.rows.data(), problem.dlen(), problem.table, problem.pen.ld,
                      problem.pen.li, problem.pen.fs, fse_pen, flags);
}

std::string letters(const FramePath& path) {
  std::string text;
  for (const FrameStep step : path.steps) text += "M-+f"[static_cast<std::size_t>(step)];
  return text;
}

TEST(FrameShiftTraceback, EveryPathHasTheScoreOfTheKernel) {
  Random random(1);
  int32_t with_shift = 0;
  for (int32_t round = 0; round < 4000; ++round) {
    FrameProblem problem =
        random_frame_problem(random, uniform(random, 0, 40), uniform(random, 0, 15), round % 4 == 0 ? -2 : 0);
    const bool linear = round % 2 == 0;
    if (linear) problem.pen.li = problem.pen.ld;
    const FramePath path = traced(problem, uniform(random, -1, 12));
    const int32_t expected = linear ? problem.linear() : problem.affine();
    ASSERT_EQ(path.score, expected) << problem;
    ASSERT_EQ(path.steps.empty(), expected <= 0);
    if (path.steps.empty()) continue;
    const Walk end = walk(path, problem);
    ASSERT_EQ(end.score, expected) << problem << " " << letters(path);
    ASSERT_GE(std::min(path.first_row, path.first_base), 1);
    ASSERT_LE(end.row, problem.dlen() - 1);
    ASSERT_LE(end.base, problem.qlen() - 1 + 2);  // the last two columns begin codons without all their bases
    with_shift += letters(path).find('f') != std::string::npos ? 1 : 0;
  }
  EXPECT_GT(with_shift, 500);
}

// Codes match themselves, but NOTHING matches nothing. Two shifts and a gap have the same score in any order.
TEST(FrameShiftTraceback, PlantedErrorsAreShown) {
  constexpr int8_t NOTHING = 10, N = NOTHING;
  Table<int32_t> scores = make_table<int32_t>(NOTHING + 1, NOTHING + 1, -50);
  for (int32_t c = 0; c < NOTHING; ++c) scores[c][c] = 20;
  const Codes one_base_more = {N, 0, N, N, 1, N, N, 2, N, N, 3, N, N, N, 4, N, N, 5, N, N};
  const Codes one_base_less = {0, N, N, 1, N, N, N, N, 3, N, N, 4, N, N, 5, N, N};
  const struct {
    const Codes& dna;
    Penalties pen;
    int32_t fse, score;
    const char* steps;
    int32_t first_base;
  } cases[] = {
      {one_base_more, {1, 12, 15}, 15, 6 * 20 - 15, "MMMMfMM", 2},
      {one_base_less, {1, 4, 5}, 5, 5 * 20 - 4 - 2 * 5, "MM-ffMMM", 1},
      {one_base_less, {1, 4, 5}, 6, 5 * 20 - 4 - 2 * 5, "MMf-fMMM", 1},
  };
  for (const auto& c : cases) {
    const FramePath path = traced(FrameProblem(c.dna, {0, 1, 2, 3, 4, 5}, scores, c.pen), c.fse);
    EXPECT_EQ(path.score, c.score);
    EXPECT_EQ(letters(path), c.steps);
    EXPECT_EQ(path.first_row, 1);
    EXPECT_EQ(path.first_base, c.first_base);
  }
}

}  // namespace
}  // namespace zelvan
