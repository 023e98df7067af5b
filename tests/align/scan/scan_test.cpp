// Every vector scan against the scalar kernels.
#include "align/scan/scan.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"
#include "support/scan_trial.h"

namespace zelvan {
namespace {

struct Trial : ScanTrial {
  std::vector<int32_t> modes() const override { return {200, 202, 210, 212}; }
  ScanTally scan(InstructionSet set, LaneWidth first, int32_t* out_scores) const override {
    return scan_database_by(set, first, qlen, targets.data(), n(), table, matrix, out_scores, &params);
  }
  int32_t scalar_score(const SeqRec& s) const override {
    return reference_score(qlen, s.seq, s.len, table, matrix, params);
  }
};

TEST_P(EverySet, GivesTheScalarScoresOnRandomPairs) {
  check_random_pairs<Trial>(GetParam());
}

TEST_P(EverySet, KeepsItsPlaceInLongTargetsAndLongQueries) {
  check_long_sequences<Trial>(GetParam());
}

TEST_P(EverySet, TakesAnyNumberAndLengthOfTargets) {
  Random random(7);
  for (const LaneWidth first : WIDTHS) {
    const int32_t lanes = kernel_shape(GetParam(), first, Recurrence::LOCAL).lanes;
    for (const int32_t targets : {0, 1, lanes - 1, lanes, lanes + 1, 5 * lanes + 3}) {
      for (const int32_t length : {0, 1, 2, 3, 4, 5, 63, 64, 65, 129}) {
        Trial trial;
        trial.draw_query(random, MATRIX_LIKE, 37);
        for (int32_t k = 0; k < targets; ++k) trial.add_random_target(random, length, 23);
        trial.check(GetParam(), first);
      }
    }
  }
}

// The best score walks over the edge of the 8-bit and of the 16-bit lanes one unit at a time.
TEST_P(EverySet, HandsOnWhatSaturates) {
  for (const int32_t edge : {255, 65535}) {
    const LaneWidth width = edge == 255 ? LaneWidth::BITS8 : LaneWidth::BITS16;
    for (const int32_t unit : {1, 100}) {
      Trial trial;
      trial.qlen = edge == 255 ? 60 : 800;
      trial.params.LD_PEN = 2 * unit;
      trial.params.LI_PEN = 3 * unit;
      trial.table = make_table<int32_t>(CODES, trial.qlen, -unit);
      const int32_t step = edge == 255 ? 10 : 100;
      for (int32_t i = 0; i <= trial.qlen - 2; ++i) {
        trial.table[0][i] = step * unit;
        trial.table[1][i] = unit;
        trial.table[GAP_CODE][i] = trial.params.LD_PEN;
        trial.table[IGAP_CODE][i] = trial.params.LI_PEN;
      }
      // `step` units for each residue of code 0, one for each of code 1.
      for (int32_t score = edge - 4; score <= edge + 3; ++score) {
        UTvector<int8_t> target(static_cast<std::size_t>(score / step), int8_t{0});
        target.insert(target.end(), static_cast<std::size_t>(score % step), int8_t{1});
        trial.add_target(std::move(target));
      }
      trial.check(GetParam(), width);
      trial.params.MODE = 200;
      UTvector<int32_t> scores(trial.targets.size());
      const ScanTally tally = trial.scan(GetParam(), width, scores.data());
      if (GetParam() != InstructionSet::PORTABLE) {  // whose lanes end at about half of that
        EXPECT_EQ(tally.saturated[edge == 255 ? 0 : 1], 4);
      }
      EXPECT_EQ(scores.back(), (edge + 3) * unit);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Scan, EverySet, ::testing::ValuesIn(VECTOR_SETS), set_name);

TEST(ScanDatabase, LeavesWhatLanesCannotHoldToTheScalarKernels) {
  Random random(9);
  Trial empty_query, many_codes;
  empty_query.draw_query(random, MATRIX_LIKE, 2);
  many_codes.draw_query(random, MATRIX_LIKE, 12);
  many_codes.table = make_table<int32_t>(40, 12, 300);
  for (Trial* trial : {&empty_query, &many_codes}) {
    for (int32_t k = 0; k < 50; ++k) trial->add_random_target(random, 30, trial->table.rows);
    const ScanTally tally = trial->check(best_instruction_set(), LaneWidth::BITS8);
    for (const int64_t finished : tally.sequences) EXPECT_EQ(finished, 0);
  }
}

}  // namespace
}  // namespace zelvan
