// The vector scans with frame shifts against the scalar kernels.
#include "dna/frame_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "dna/frame_shift_reference.h"

namespace {

constexpr InstructionSet VECTOR_SETS[] = {InstructionSet::PORTABLE, InstructionSet::SSE41,
                                          InstructionSet::AVX2, InstructionSet::AVX512};
constexpr LaneWidth WIDTHS[] = {LaneWidth::BITS8, LaneWidth::BITS16, LaneWidth::BITS32};
constexpr int32_t CODES = 27;

struct Trial {
  Params params;
  LookupTable table;
  int32_t m = 0;
  UTvector<UTvector<int8_t>> residues;

  int32_t scalar_score(const SeqRec& s) const {
    switch (params.MODE) {
      case 10:
        return nswli(m, s.seq, s.len - 2, table, params.LD_PEN, params.LI_PEN, params.FS_PEN);
      case 12:
        return nswli(m, s.seq, s.len, table, params.LD_PEN, params.LI_PEN, params.FS_PEN);
      case 20:
        return npswl(m, s.seq, s.len, table, params.LD_PEN, params.FS_PEN);
      default:
        return npswli2(m, s.seq, s.len, table, params.LD_PEN, params.LI_PEN, params.FS_PEN);
    }
  }
  // Scans in every mode; returns the sequences finished per lane width.
  ScanTally check(InstructionSet set, LaneWidth first) {
    UTvector<SeqRec> targets;
    for (UTvector<int8_t>& codes : residues) {
      SeqRec record;
      record.seq = codes.data();
      record.len = static_cast<int32_t>(codes.size());
      targets.push_back(record);
    }
    ScanTally sum;
    for (const int32_t mode : {10, 12, 20, 22}) {
      params.MODE = mode;
      UTvector<int32_t> scores(targets.size(), -77);
      const ScanTally tally = scan_frames_by(
          set, first, m, targets.data(), static_cast<int32_t>(targets.size()), table, scores.data(), &params);
      for (int w = 0; w < 3; ++w) {
        sum.sequences[w] += tally.sequences[w];
        if (tally.sequences[w] > 0) {
          EXPECT_EQ(tally.set, set);
        }
      }
      for (std::size_t k = 0; k < targets.size(); ++k) {
        EXPECT_EQ(scores[k], scalar_score(targets[k])) << "target " << k << ", mode " << mode;
      }
    }
    return sum;
  }
};

struct Dice {
  std::mt19937 engine;
  int32_t roll(int32_t low, int32_t high) {
    return std::uniform_int_distribution<int32_t>(low, high)(engine);
  }
};

void add_target(Trial& trial, Dice& dice, int32_t length, int32_t codes) {
  UTvector<int8_t> target(static_cast<std::size_t>(length + 2), int8_t{0});
  std::generate(target.begin() + 1, target.end() - 1,
                [&] { return static_cast<int8_t>(dice.roll(0, codes - 1)); });
  trial.residues.push_back(std::move(target));
}

// Scores in low..high and penalties in penalty_low..penalty_high, all times `unit`.
struct Draw {
  const char* name;
  int32_t low, high, unit, penalty_low, penalty_high;
};
constexpr Draw DRAWS[] = {
    {"matrix-like", -8, 11, 100, 1, 14},       {"zero penalties", -3, 4, 100, 0, 2},
    {"cheap shifts", -2, 9, 100, 0, 5},        {"byte range", -128, 127, 3, 0, 127},
    {"word range", -32768, 32767, 1, 0, 9000}, {"beyond words", -90000, 90000, 1, 0, 50000},
    {"negative penalties", -9, 9, 100, -3, 9},
};

void draw_table(Trial& trial, Dice& dice, const Draw& draw, int32_t m) {
  trial.m = m;
  trial.table = make_table<int32_t>(CODES, m, 0);
  const int32_t kinds = dice.roll(1, 70);
  auto kind_scores = make_table<int32_t>(kinds, CODES, 0);
  for (int32_t& score : kind_scores.cells) score = dice.roll(draw.low, draw.high) * draw.unit;
  for (int32_t i = 0; i <= m - 2; ++i) {
    const int32_t kind = dice.roll(0, kinds - 1);
    for (int32_t c = 0; c < CODES; ++c) trial.table[c][i] = kind_scores[kind][c];
  }
  trial.params.LD_PEN = dice.roll(draw.penalty_low, draw.penalty_high) * draw.unit;
  trial.params.LI_PEN = dice.roll(draw.penalty_low, draw.penalty_high) * draw.unit;
  trial.params.FS_PEN = dice.roll(draw.penalty_low, draw.penalty_high) * draw.unit;
}

class FramesBySet : public ::testing::TestWithParam<InstructionSet> {
 protected:
  void SetUp() override {
    if (!is_usable(GetParam())) GTEST_SKIP() << "not usable on this machine";
  }
};

TEST_P(FramesBySet, GivesTheScalarScoresOnRandomPairs) {
  Dice dice{std::mt19937(42)};
  ScanTally sum;
  std::size_t pairs = 0;
  for (int32_t round = 0; pairs < 100000; ++round) {
    const Draw& draw = DRAWS[static_cast<std::size_t>(round) % std::size(DRAWS)];
    SCOPED_TRACE(std::string(draw.name) + ", round " + std::to_string(round));
    Trial trial;
    draw_table(trial, dice, draw, dice.roll(2, round % 5 == 0 ? 90 : 16));
    const int32_t targets = dice.roll(1, 600);
    const int32_t longest = round % 3 == 0 ? 110 : 14;
    const int32_t codes = dice.roll(1, CODES);
    for (int32_t k = 0; k < targets; ++k) add_target(trial, dice, dice.roll(0, longest), codes);
    pairs += trial.residues.size();
    const ScanTally tally =
        trial.check(GetParam(), WIDTHS[static_cast<std::size_t>(round / 7) % std::size(WIDTHS)]);
    for (int w = 0; w < 3; ++w) sum.sequences[w] += tally.sequences[w];
    if (HasFailure()) return;
  }
  for (int w = GetParam() == InstructionSet::PORTABLE ? 1 : 0; w < 3; ++w) EXPECT_GT(sum.sequences[w], 1000);
}

TEST_P(FramesBySet, KeepsItsPlaceInLongTargetsAndLongQueries) {
  Dice dice{std::mt19937(12)};
  for (const LaneWidth first : WIDTHS) {
    Trial trial;
    draw_table(trial, dice, DRAWS[0], 50);
    add_target(trial, dice, 35000, 23);
    for (int32_t k = 0; k < 80; ++k) add_target(trial, dice, dice.roll(0, 500), 23);
    trial.check(GetParam(), first);
    Trial long_query;
    draw_table(long_query, dice, DRAWS[0], 15998);
    add_target(long_query, dice, 12, 23);
    add_target(long_query, dice, 1, 23);
    long_query.check(GetParam(), first);
  }
}

INSTANTIATE_TEST_SUITE_P(Scan, FramesBySet, ::testing::ValuesIn(VECTOR_SETS), [](const auto& instance) {
  return std::string(instruction_set_name(instance.param));
});

}  // namespace
