// The vector scans with frame shifts against the scalar kernels.
#include "dna/frame_scan.h"

#include <gtest/gtest.h>

#include "dna/frame_shift_reference.h"
#include "support/scan_trial.h"

namespace zelvan {
namespace {

struct Trial : ScanTrial {
  std::vector<int32_t> modes() const override { return {12, 20, 22}; }
  ScanTally scan(InstructionSet set, LaneWidth first, int32_t* out_scores) const override {
    return scan_frames_by(set, first, qlen, targets.data(), n(), table, out_scores, &params);
  }
  int32_t scalar_score(const SeqRec& s) const override {
    const int32_t ld = params.LD_PEN, li = params.LI_PEN, fs = params.FS_PEN;
    switch (params.MODE) {
      case 12:
        return nswli(qlen, s.seq, s.len, table, ld, li, fs);
      case 20:
        return npswl(qlen, s.seq, s.len, table, ld, fs);
      default:
        return npswli2(qlen, s.seq, s.len, table, ld, li, fs);
    }
  }
};

TEST_P(EverySet, GivesTheScalarScoresOnRandomPairs) {
  check_random_pairs<Trial>(GetParam());
}

TEST_P(EverySet, KeepsItsPlaceInLongTargetsAndLongQueries) {
  check_long_sequences<Trial>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(FrameScan, EverySet, ::testing::ValuesIn(VECTOR_SETS), set_name);

}  // namespace
}  // namespace zelvan
