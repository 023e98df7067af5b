// Random problems: every vector scan against the scalar kernels.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/scan_problem.h"

namespace zelvan {

// The scans of one folder: the mode is the one that problem.params has.
struct ScanFamily {
  std::vector<int32_t> modes;
  ScanTally (*scan)(const ScanProblem& problem, InstructionSet set, LaneWidth first, int32_t* out_scores);
};

// Scans in every mode with lanes from `first` on; returns the sequences that each lane width finished.
inline ScanTally check_scan(const ScanFamily& family, ScanProblem& problem, InstructionSet set,
                            LaneWidth first) {
  ScanTally sum;
  for (const int32_t mode : family.modes) {
    problem.params.MODE = mode;
    UTvector<int32_t> scores(problem.targets.size(), -77), expected = scores;
    const ScanTally tally = family.scan(problem, set, first, scores.data());
    family.scan(problem, InstructionSet::REFERENCE, first, expected.data());
    for (int w = 0; w < 3; ++w) {
      sum.sequences[w] += tally.sequences[w];
      EXPECT_TRUE(tally.sequences[w] == 0 || tally.set == set);
    }
    EXPECT_EQ(scores, expected) << "mode " << mode;
  }
  return sum;
}

// At least 110,000 random targets in every mode.
inline void check_random_pairs(const ScanFamily& family, InstructionSet set) {
  Random random(20240607);
  ScanTally sum;
  int32_t pairs = 0;
  for (int32_t round = 0; pairs < 110000 && !::testing::Test::HasFailure(); ++round) {
    ScanProblem problem;
    SCOPED_TRACE(problem.draw_round(random, round));
    pairs += problem.n();
    const ScanTally tally =
        check_scan(family, problem, set, WIDTHS[static_cast<std::size_t>(round / 7) % std::size(WIDTHS)]);
    for (int w = 0; w < 3; ++w) sum.sequences[w] += tally.sequences[w];
  }
  for (int w = set == InstructionSet::PORTABLE ? 1 : 0; w < 3; ++w) {  // which has no lanes of 8 bits
    EXPECT_GT(sum.sequences[w], 1000) << "lanes of width " << w;
  }
}

// The longest query, and a target longer than most among short ones.
inline void check_long_sequences(const ScanFamily& family, InstructionSet set) {
  Random random(11);
  for (const LaneWidth first : WIDTHS) {
    for (const Draw& draw : {MATRIX_LIKE, PROFILE_LIKE}) {
      ScanProblem problem;
      problem.draw_query(random, draw, 40);
      problem.add_random_target(random, 35000, 23);
      for (int32_t k = 0; k < 90; ++k) problem.add_random_target(random, uniform(random, 0, 400), 23);
      check_scan(family, problem, set, first);
    }
    ScanProblem problem;
    problem.draw_query(random, MATRIX_LIKE, 15998);
    for (const int32_t length : {9, 1}) problem.add_random_target(random, length, 23);
    check_scan(family, problem, set, first);
  }
}

// One test for every instruction set that this machine has.
class EverySet : public ::testing::TestWithParam<InstructionSet> {
 protected:
  void SetUp() override {
    if (!is_usable(GetParam())) GTEST_SKIP() << "not usable on this machine";
  }
};

inline std::string set_name(const ::testing::TestParamInfo<InstructionSet>& instance) {
  return instruction_set_name(instance.param);
}

}  // namespace zelvan
