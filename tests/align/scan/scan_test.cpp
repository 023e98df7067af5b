// Every vector scan against the scalar kernels.
#include "align/scan/scan.h"

#include <gtest/gtest.h>

#include "support/scan_trial.h"

namespace zelvan {
namespace {

ScanTally scan(const ScanProblem& problem, InstructionSet set, LaneWidth first, int32_t* out_scores) {
  return scan_database_by(set, first, problem.qlen, {problem.targets.data(), problem.n()}, problem.table,
                          problem.matrix, out_scores, &problem.params);
}

const ScanFamily FAMILY = {{200, 202, 210, 212}, scan};

TEST_P(EverySet, GivesTheScalarScoresOnRandomPairs) {
  check_random_pairs(FAMILY, GetParam());
}

TEST_P(EverySet, KeepsItsPlaceInLongTargetsAndLongQueries) {
  check_long_sequences(FAMILY, GetParam());
}

TEST_P(EverySet, TakesAnyNumberAndLengthOfTargets) {
  Random random(7);
  for (const LaneWidth first : WIDTHS) {
    const int32_t lanes = vector_bytes(GetParam()) / lane_bytes(first);
    for (const int32_t targets : {0, 1, lanes - 1, lanes, lanes + 1, 5 * lanes + 3}) {
      for (const int32_t length : {0, 1, 2, 3, 4, 5, 63, 64, 65, 129}) {
        ScanProblem problem;
        problem.draw_query(random, MATRIX_LIKE, 37);
        for (int32_t k = 0; k < targets; ++k) problem.add_random_target(random, length, 23);
        check_scan(FAMILY, problem, GetParam(), first);
      }
    }
  }
}

// The best score walks over the edge of the 8-bit and of the 16-bit lanes one unit at a time. Lanes of 16
// bits that do not saturate end at 32767: no path but the best comes near, and only its last step runs over.
TEST_P(EverySet, HandsOnWhatSaturates) {
  for (const int32_t edge : {255, 32767, 65535}) {
    const LaneWidth width = edge == 255 ? LaneWidth::BITS8 : LaneWidth::BITS16;
    for (const int32_t unit : {1, 100}) {
      const int32_t step = edge == 255 ? 10 : 100;
      ScanProblem problem;
      problem.qlen = edge == 255 ? 60 : 800;
      problem.params.LD_PEN = problem.params.LI_PEN = step * unit;
      problem.table = make_table<int32_t>(CODES, problem.qlen, -unit);
      for (int32_t i = 0; i <= problem.qlen - 2; ++i) {
        problem.table[0][i] = step * unit;
        problem.table[1][i] = unit;
        problem.table[GAP_CODE][i] = problem.params.LD_PEN;
        problem.table[IGAP_CODE][i] = problem.params.LI_PEN;
      }
      // `step` units for each residue of code 0, one for each of code 1.
      for (int32_t score = edge - 4; score <= edge + 3; ++score) {
        UTvector<int8_t> target(static_cast<std::size_t>(score / step), int8_t{0});
        target.insert(target.begin() + 1, static_cast<std::size_t>(score % step), int8_t{1});
        problem.add_target(std::move(target));
      }
      check_scan(FAMILY, problem, GetParam(), width);
      problem.params.MODE = 200;
      UTvector<int32_t> scores(problem.targets.size());
      const ScanTally tally = scan(problem, GetParam(), width, scores.data());
      if (GetParam() != InstructionSet::PORTABLE) {
        EXPECT_EQ(tally.saturated[edge == 255 ? 0 : 1], edge == 32767 ? 0 : 4);
      }
      EXPECT_EQ(scores.back(), (edge + 3) * unit);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Scan, EverySet, ::testing::ValuesIn(VECTOR_SETS), set_name);
#if defined(__x86_64__)
INSTANTIATE_TEST_SUITE_P(ScanOnly, EverySet, ::testing::Values(InstructionSet::AVX512VBMI), set_name);
#endif

TEST(ScanDatabase, LeavesWhatLanesCannotHoldToTheScalarKernels) {
  Random random(9);
  ScanProblem empty_query, many_codes;
  empty_query.draw_query(random, MATRIX_LIKE, 2);
  many_codes.draw_query(random, MATRIX_LIKE, 12);
  many_codes.table = make_table<int32_t>(40, 12, 300);
  for (ScanProblem* problem : {&empty_query, &many_codes}) {
    for (int32_t k = 0; k < 50; ++k) problem->add_random_target(random, 30, problem->table.rows);
    const ScanTally tally = check_scan(FAMILY, *problem, best_instruction_set(), LaneWidth::BITS8);
    for (const int64_t finished : tally.sequences) EXPECT_EQ(finished, 0);
  }
}

}  // namespace
}  // namespace zelvan
