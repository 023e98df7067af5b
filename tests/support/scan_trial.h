// Random problems: every vector scan against the scalar kernels.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/scan_problem.h"

namespace zelvan {

// The folder under test says what is compared.
struct ScanTrial : ScanProblem {
  virtual ~ScanTrial() = default;
  virtual std::vector<int32_t> modes() const = 0;
  virtual ScanTally scan(InstructionSet set, LaneWidth first, int32_t* out_scores) const = 0;
  virtual int32_t scalar_score(const SeqRec& target) const = 0;

  // Scans in every mode with lanes from `first` on; returns the sequences that each lane width finished.
  ScanTally check(InstructionSet set, LaneWidth first) {
    ScanTally sum;
    for (const int32_t mode : modes()) {
      params.MODE = mode;
      UTvector<int32_t> scores(targets.size(), -77);
      const ScanTally tally = scan(set, first, scores.data());
      for (int w = 0; w < 3; ++w) {
        sum.sequences[w] += tally.sequences[w];
        EXPECT_TRUE(tally.sequences[w] == 0 || tally.set == set);
      }
      for (std::size_t k = 0; k < targets.size(); ++k) {
        EXPECT_EQ(scores[k], scalar_score(targets[k]))
            << "target " << k << " of " << n() << ", mode " << mode;
      }
    }
    return sum;
  }
};

// At least 110,000 random targets in every mode.
template <class Trial>
void check_random_pairs(InstructionSet set) {
  Random random(20240607);
  ScanTally sum;
  int32_t pairs = 0;
  for (int32_t round = 0; pairs < 110000 && !::testing::Test::HasFailure(); ++round) {
    const Draw& draw = DRAWS[static_cast<std::size_t>(round) % std::size(DRAWS)];
    SCOPED_TRACE(std::string(draw.name) + ", round " + std::to_string(round));
    Trial trial;
    trial.draw_query(random, draw, uniform(random, 2, round % 5 == 0 ? 90 : 14));
    const int32_t longest = round % 3 == 0 ? 90 : 12;
    const int32_t codes = uniform(random, 1, CODES);
    for (int32_t k = uniform(random, 1, 700); k > 0; --k) {
      trial.add_random_target(random, uniform(random, 0, longest), codes);
    }
    pairs += trial.n();
    const ScanTally tally = trial.check(set, WIDTHS[static_cast<std::size_t>(round / 7) % std::size(WIDTHS)]);
    for (int w = 0; w < 3; ++w) sum.sequences[w] += tally.sequences[w];
  }
  const int narrowest = kernel_shape(set, LaneWidth::BITS8, Recurrence::LOCAL).lanes > 0 ? 0 : 1;
  for (int w = narrowest; w < 3; ++w) EXPECT_GT(sum.sequences[w], 1000) << "lanes of width " << w;
}

// The longest query, and a target longer than most among short ones.
template <class Trial>
void check_long_sequences(InstructionSet set) {
  Random random(11);
  for (const LaneWidth first : WIDTHS) {
    for (const Draw& draw : {MATRIX_LIKE, PROFILE_LIKE}) {
      Trial trial;
      trial.draw_query(random, draw, 40);
      trial.add_random_target(random, 35000, 23);
      for (int32_t k = 0; k < 90; ++k) trial.add_random_target(random, uniform(random, 0, 400), 23);
      trial.check(set, first);
    }
    Trial trial;
    trial.draw_query(random, MATRIX_LIKE, 15998);
    for (const int32_t length : {9, 1}) trial.add_random_target(random, length, 23);
    trial.check(set, first);
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
