#include "dna/frame_flags.h"

#include "support/scan_trial.h"

namespace zelvan {
namespace {

class FrameFlagsOfEverySet : public EverySet {};

// At least 110,000 pairs; negative penalties are the reference's in every set.
TEST_P(FrameFlagsOfEverySet, GivesTheFlagsOfTheReference) {
  Random random(13);
  MoveFlags flags, expected;
  int32_t pairs = 0;
  for (int32_t round = 0; pairs < 110000 && !HasFailure(); ++round) {
    ScanProblem problem;
    SCOPED_TRACE(problem.draw_round(random, round));
    pairs += problem.n();
    const Params& p = problem.params;
    const FramePenalties penalties = {p.LD_PEN, round % 2 == 0 ? p.LI_PEN : p.LD_PEN, p.FS_PEN};
    for (const SeqRec& target : problem.targets) {
      const auto fill = [&](InstructionSet set, MoveFlags& out_flags) {
        return fill_frame_flags(problem.qlen, target.seq, target.len, problem.table, penalties, set,
                                out_flags);
      };
      const BestCell reference = fill(InstructionSet::REFERENCE, expected), found = fill(GetParam(), flags);
      ASSERT_EQ(found.score, reference.score);
      if (reference.score <= 0) continue;
      ASSERT_EQ(found.row, reference.row);
      ASSERT_EQ(found.column, reference.column);
      for (int32_t i = 1; i <= target.len - 2; ++i) {
        for (int32_t j = 1; j <= problem.qlen - 2; ++j) {
          const int ignored = (expected[i][j] & CELL_ZERO) != 0 ? ~CELL_ZERO : 0;
          ASSERT_EQ(flags[i][j] | ignored, expected[i][j] | ignored) << i << "," << j;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Trace, FrameFlagsOfEverySet, ::testing::ValuesIn(VECTOR_SETS), set_name);

}  // namespace
}  // namespace zelvan
