#include "align/trace/move_flags.h"

#include "support/scan_trial.h"

namespace zelvan {
namespace {

class MoveFlagsOfEverySet : public EverySet {};

// At least 110,000 pairs; negative penalties are the reference's in every set.
TEST_P(MoveFlagsOfEverySet, GivesTheFlagsOfTheReference) {
  Random random(12);
  MoveFlags flags, expected;
  int32_t pairs = 0;
  for (int32_t round = 0; pairs < 110000 && !HasFailure(); ++round) {
    ScanProblem problem;
    SCOPED_TRACE(problem.draw_round(random, round));
    pairs += problem.n();
    const GapRows gaps = {problem.table[GAP_CODE], problem.table[round % 2 == 0 ? IGAP_CODE : GAP_CODE]};
    int32_t threshold = 0;
    for (const SeqRec& target : problem.targets) {
      const auto sweep = [&](InstructionSet set, MoveFlags& out_flags) {
        return fill_flags(problem.qlen, target.seq, target.len, problem.table, gaps, threshold, set,
                          out_flags);
      };
      const FlagSweep reference = sweep(InstructionSet::REFERENCE, expected),
                      found = sweep(GetParam(), flags);
      for (int32_t j = 1; j <= target.len - 2; ++j) {
        for (int32_t i = 1; i <= problem.qlen - 2; ++i) {
          const int ignored = (expected[j][i] & CELL_ZERO) != 0 ? ALL_MOVES : 0;
          ASSERT_EQ(flags[j][i] | ignored, expected[j][i] | ignored) << i << "," << j;
        }
      }
      ASSERT_EQ(found.best, reference.best);
      ASSERT_EQ(found.high_rows, reference.high_rows);
      threshold = found.best - 2;  // of the next one: some are reached and some are not
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Trace, MoveFlagsOfEverySet, ::testing::ValuesIn(VECTOR_SETS), set_name);

}  // namespace
}  // namespace zelvan
