// Every vector scan against the scalar kernels.
#include "align/scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "align/scan_reference.h"

namespace {

constexpr InstructionSet VECTOR_SETS[] = {InstructionSet::PORTABLE, InstructionSet::SSE41,
                                          InstructionSet::AVX2, InstructionSet::AVX512};
constexpr LaneWidth WIDTHS[] = {LaneWidth::BITS8, LaneWidth::BITS16, LaneWidth::BITS32};
constexpr int32_t MODES[] = {200, 202, 210, 212};
constexpr int32_t CODES = 27;
constexpr int8_t GAP_CODE = 23;
constexpr int8_t IGAP_CODE = 25;

// A query, targets and penalties, and the scores by the scalar kernels.
struct Trial {
  ScoreMatrix matrix;
  Params params;
  LookupTable table;
  int32_t qlen = 0;
  UTvector<UTvector<int8_t>> residues;
  UTvector<SeqRec> targets;

  Trial() {
    matrix.inlen = CODES;
    matrix.xindex.fill(22);
    params.GAP_CHARACTER = ' ';
    params.IGAP_CHARACTER = ':';
    matrix.xindex[' '] = GAP_CODE;
    matrix.xindex[':'] = IGAP_CODE;
  }
  void add_target(UTvector<int8_t> codes) {
    codes.insert(codes.begin(), GAP_CODE);
    codes.push_back(0);
    residues.push_back(std::move(codes));
  }
  int32_t scalar_score(const SeqRec& s) const {
    switch (params.MODE) {
      case 200:
        return swl(qlen, s.seq, s.len, table, params.LD_PEN);
      case 202:
        return swli(qlen, s.seq, s.len, table, params.LD_PEN, params.LI_PEN);
      case 210:
        return swlv(qlen, s.seq, s.len, table, matrix, &params);
      default:
        return swliv(qlen, s.seq, s.len, table, matrix, &params);
    }
  }
  // Scans in every mode with lanes from `first` on; returns the number of pairs compared.
  int64_t check(InstructionSet set, LaneWidth first) {
    targets.clear();
    for (UTvector<int8_t>& codes : residues) {
      SeqRec record;
      record.seq = codes.data();
      record.len = static_cast<int32_t>(codes.size());
      targets.push_back(record);
    }
    const auto n = static_cast<int32_t>(targets.size());
    int64_t pairs = 0;
    for (const int32_t mode : MODES) {
      params.MODE = mode;
      UTvector<int32_t> scores(targets.size(), -77);
      const ScanTally tally =
          scan_database_by(set, first, qlen, targets.data(), n, table, matrix, scores.data(), &params);
      if (tally.sequences[0] + tally.sequences[1] + tally.sequences[2] > 0) {
        EXPECT_EQ(tally.set, set);
      }
      for (std::size_t k = 0; k < targets.size(); ++k) {
        EXPECT_EQ(scores[k], scalar_score(targets[k])) << "target " << k << " of " << n << ", mode " << mode;
      }
      pairs += n;
      if (::testing::Test::HasFailure()) return pairs;
    }
    return pairs;
  }
};

struct Dice {
  std::mt19937 engine;
  int32_t roll(int32_t low, int32_t high) {
    return std::uniform_int_distribution<int32_t>(low, high)(engine);
  }
};

UTvector<int8_t> random_target(Dice& dice, int32_t length, int32_t codes) {
  UTvector<int8_t> target(static_cast<std::size_t>(length));
  std::generate(target.begin(), target.end(), [&] { return static_cast<int8_t>(dice.roll(0, codes - 1)); });
  return target;
}

// How scores and penalties are drawn.
struct Draw {
  const char* name;
  int32_t low, high, step;            // scores
  int32_t penalty_low, penalty_high;  // of both kinds
  bool few_rows;                      // query positions drawn from few different ones
};
constexpr Draw DRAWS[] = {
    {"matrix-like", -8, 11, 100, 1, 14, true},
    {"zero and small penalties", -3, 4, 100, 0, 2, true},
    {"profile-like", -1500, 1500, 1, 1, 1400, false},
    {"byte range", -128, 127, 7, 0, 127, true},
    {"word range", -32768, 32767, 1, 0, 32767, false},
    {"beyond words", -300000, 200000, 1, 0, 90000, false},
    {"negative penalties", -9, 12, 100, -3, 9, true},
    {"negative penalties only", -9, 12, 1, -5, 0, false},
    {"mostly positive scores", -1, 5, 100, 0, 12, true},
    {"never positive", -9, 0, 10, 0, 12, true},
};

void draw_table(Trial& trial, Dice& dice, const Draw& draw, int32_t qlen) {
  trial.qlen = qlen;
  trial.table = make_table<int32_t>(CODES, qlen, 0);
  const auto score = [&] { return dice.roll(draw.low, draw.high) * draw.step; };
  const auto penalty = [&] { return dice.roll(draw.penalty_low, draw.penalty_high) * draw.step; };
  const int32_t kinds = draw.few_rows ? dice.roll(1, 20) : qlen;
  auto kind_scores = make_table<int32_t>(kinds, CODES, 0);
  std::generate(kind_scores.cells.begin(), kind_scores.cells.end(), score);
  const bool steady = dice.roll(0, 1) == 0;
  trial.params.LD_PEN = penalty();
  trial.params.LI_PEN = penalty();
  for (int32_t i = 0; i <= qlen - 2; ++i) {
    const int32_t kind = draw.few_rows ? dice.roll(0, kinds - 1) : i;
    for (int32_t c = 0; c < CODES; ++c) trial.table[c][i] = kind_scores[kind][c];
    trial.table[GAP_CODE][i] = steady ? trial.params.LD_PEN : penalty();
    trial.table[IGAP_CODE][i] = steady ? trial.params.LI_PEN : penalty();
  }
}

class EverySet : public ::testing::TestWithParam<InstructionSet> {
 protected:
  void SetUp() override {
    if (!is_usable(GetParam())) GTEST_SKIP() << "not usable on this machine";
  }
};

TEST_P(EverySet, GivesTheScalarScoresOnRandomPairs) {
  Dice dice{std::mt19937(20240607)};
  int64_t pairs = 0;
  for (int32_t round = 0; pairs < 4 * 110000; ++round) {
    const Draw& draw = DRAWS[static_cast<std::size_t>(round) % std::size(DRAWS)];
    const LaneWidth first = WIDTHS[static_cast<std::size_t>(round / 7) % std::size(WIDTHS)];
    SCOPED_TRACE(std::string(draw.name) + ", round " + std::to_string(round));
    Trial trial;
    draw_table(trial, dice, draw, dice.roll(2, round % 5 == 0 ? 60 : 14));
    const int32_t longest = round % 3 == 0 ? 70 : 12;
    const int32_t targets = dice.roll(1, 700);
    const int32_t codes = dice.roll(1, CODES);
    for (int32_t k = 0; k < targets; ++k) {
      trial.add_target(random_target(dice, dice.roll(0, longest), codes));
    }
    pairs += trial.check(GetParam(), first);
    if (HasFailure()) return;
  }
}

TEST_P(EverySet, TakesAnyNumberAndLengthOfTargets) {
  Dice dice{std::mt19937(7)};
  for (const LaneWidth first : WIDTHS) {
    const int32_t lanes = kernel_shape(GetParam(), first, Recurrence::LOCAL).lanes;
    for (const int32_t targets : {0, 1, lanes - 1, lanes, lanes + 1, 5 * lanes + 3}) {
      for (const int32_t length : {0, 1, 2, 3, 4, 5, 63, 64, 65, 129}) {
        Trial trial;
        draw_table(trial, dice, DRAWS[0], 37);
        for (int32_t k = 0; k < targets; ++k) trial.add_target(random_target(dice, length, 23));
        trial.check(GetParam(), first);
      }
    }
  }
}

TEST_P(EverySet, KeepsItsPlaceInLongTargetsAndLongQueries) {
  Dice dice{std::mt19937(11)};
  for (const LaneWidth first : WIDTHS) {
    for (const Draw& draw : {DRAWS[0], DRAWS[2]}) {
      Trial trial;
      draw_table(trial, dice, draw, 40);
      trial.add_target(random_target(dice, 35000, 23));
      for (int32_t k = 0; k < 90; ++k) trial.add_target(random_target(dice, dice.roll(1, 400), 23));
      trial.check(GetParam(), first);
    }
    Trial trial;
    draw_table(trial, dice, DRAWS[0], 15999);
    trial.add_target(random_target(dice, 9, 23));
    trial.add_target(random_target(dice, 1, 23));
    trial.check(GetParam(), first);
  }
}

// The best score walks over the edge of the 8-bit and of the 16-bit lanes one unit at a time.
TEST_P(EverySet, HandsOnWhatSaturates) {
  for (const int32_t edge : {255, 65535}) {
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
      trial.check(GetParam(), edge == 255 ? LaneWidth::BITS8 : LaneWidth::BITS16);
      trial.params.MODE = 200;
      UTvector<int32_t> scores(trial.targets.size());
      const ScanTally tally =
          scan_database_by(GetParam(), edge == 255 ? LaneWidth::BITS8 : LaneWidth::BITS16, trial.qlen,
                           trial.targets.data(), static_cast<int32_t>(trial.targets.size()), trial.table,
                           trial.matrix, scores.data(), &trial.params);
      if (GetParam() != InstructionSet::PORTABLE) {  // whose lanes end at about half of that
        EXPECT_EQ(tally.saturated[edge == 255 ? 0 : 1], 4);
      }
      EXPECT_EQ(scores.front(), (edge - 4) * unit);
      EXPECT_EQ(scores.back(), (edge + 3) * unit);
    }
  }
}

TEST_P(EverySet, ReadsEveryCodeOfTheAlphabet) {
  Dice dice{std::mt19937(5)};
  for (const LaneWidth first : WIDTHS) {
    Trial trial;
    draw_table(trial, dice, DRAWS[0], 20);
    for (int8_t c = 0; c < CODES; ++c) trial.add_target(UTvector<int8_t>(9, c));
    trial.check(GetParam(), first);
  }
}

INSTANTIATE_TEST_SUITE_P(Scan, EverySet, ::testing::ValuesIn(VECTOR_SETS), [](const auto& instance) {
  return std::string(instruction_set_name(instance.param));
});

TEST(ScanDatabase, LeavesScoresAloneInOtherModes) {
  Dice dice{std::mt19937(3)};
  Trial trial;
  draw_table(trial, dice, DRAWS[0], 10);
  trial.add_target({1, 2, 3});
  trial.check(best_instruction_set(), LaneWidth::BITS8);
  trial.params.MODE = 22;
  int32_t score = -77;
  scan_database(trial.qlen, trial.targets.data(), 1, trial.table, trial.matrix, &score, &trial.params);
  EXPECT_EQ(score, -77);
}

TEST(ScanDatabase, LeavesAlphabetsBeyondTheLanesToTheScalarKernels) {
  Dice dice{std::mt19937(9)};
  Trial trial;
  draw_table(trial, dice, DRAWS[0], 12);
  const LookupTable narrow = trial.table;
  trial.table = make_table<int32_t>(40, 12, 300);
  std::copy(narrow.cells.begin(), narrow.cells.end(), trial.table.cells.begin());
  for (int32_t k = 0; k < 50; ++k) trial.add_target(random_target(dice, 30, 40));
  EXPECT_EQ(trial.check(best_instruction_set(), LaneWidth::BITS8), 4 * 50);
}

TEST(ScanDatabase, GivesNoScoreToAnEmptyQuery) {
  Dice dice{std::mt19937(3)};
  Trial trial;
  draw_table(trial, dice, DRAWS[0], 2);
  trial.add_target({1, 2, 3});
  trial.check(best_instruction_set(), LaneWidth::BITS8);
}

}  // namespace
