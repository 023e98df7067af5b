// The vector scans with frame shifts against the scalar kernels.
#include "dna/frame_scan.h"

#include <gtest/gtest.h>

#include "support/scan_trial.h"

namespace zelvan {
namespace {

ScanTally scan(const ScanProblem& problem, InstructionSet set, LaneWidth first, int32_t* out_scores) {
  return scan_frames_by(set, first, problem.qlen, {problem.targets.data(), problem.n()}, problem.table,
                        out_scores, &problem.params);
}

const ScanFamily FAMILY = {{12, 20, 22}, scan};

TEST_P(EverySet, GivesTheScalarScoresOnRandomPairs) {
  check_random_pairs(FAMILY, GetParam());
}

TEST_P(EverySet, KeepsItsPlaceInLongTargetsAndLongQueries) {
  check_long_sequences(FAMILY, GetParam());
}

INSTANTIATE_TEST_SUITE_P(FrameScan, EverySet, ::testing::ValuesIn(VECTOR_SETS), set_name);

}  // namespace
}  // namespace zelvan
