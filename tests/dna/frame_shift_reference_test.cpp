#include "dna/frame_shift_reference.h"

#include <gtest/gtest.h>

#include "dna/frame_problem.h"
#include "dna/frame_scan.h"

namespace zelvan {
namespace {

// The best cell straight from the definition, all cells kept. One step along the protein and three along the
// translated sequence, which may be the rows or the columns.
int32_t best_by_definition(const FrameProblem& problem, bool translated_rows, int32_t li_pen) {
  struct Cell {
    int32_t h = 0;
    bool up = false, left = false;
  };
  constexpr int32_t EDGE = 3;
  const int32_t dlen = problem.dlen(), qlen = problem.qlen();
  const Penalties& pen = problem.pen;
  std::vector<std::vector<Cell>> cells(static_cast<std::size_t>(dlen + EDGE),
                                       std::vector<Cell>(static_cast<std::size_t>(qlen + EDGE)));
  const auto cell = [&](int32_t i, int32_t j) -> Cell& {
    return cells[static_cast<std::size_t>(i + EDGE)][static_cast<std::size_t>(j + EDGE)];
  };
  const int32_t di = translated_rows ? 3 : 1;
  const int32_t dj = translated_rows ? 1 : 3;
  int32_t best = -1;
  for (int32_t i = 1; i <= dlen - 2; ++i) {
    for (int32_t j = 1; j <= qlen - 2; ++j) {
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

// The score that a mode's scalar kernel gives.
int32_t scan_score(FrameProblem& problem, int32_t mode) {
  Params p;
  p.MODE = mode;
  p.LD_PEN = problem.pen.ld;
  p.LI_PEN = problem.pen.li;
  p.FS_PEN = problem.pen.fs;
  SeqRec target;
  target.seq = problem.rows.data();
  target.len = problem.dlen();
  int32_t score = -77;
  scan_frames_by(InstructionSet::REFERENCE, LaneWidth::BITS8, problem.qlen(), {&target, 1}, problem.table,
                 &score, &p);
  return score;
}

TEST(FrameShiftKernels, FollowTheirDefinitionInEveryMode) {
  Random random(1);
  for (int32_t round = 0; round < 3000; ++round) {
    FrameProblem problem =
        random_frame_problem(random, uniform(random, 0, 14), uniform(random, 0, 14), round % 4 == 0 ? -3 : 0);
    EXPECT_EQ(scan_score(problem, 12), best_by_definition(problem, true, problem.pen.li)) << problem;
    EXPECT_EQ(scan_score(problem, 20), best_by_definition(problem, false, problem.pen.ld)) << problem;
    EXPECT_EQ(scan_score(problem, 22), best_by_definition(problem, false, problem.pen.li)) << problem;
  }
}

}  // namespace
}  // namespace zelvan
