#include "iter/profile_log_odds.h"

#include <gtest/gtest.h>

#include <cmath>

#include "iter/family.h"
#include "iter/residue_model.h"

namespace zelvan {
namespace {

// Random scores over the whole alphabet, asymmetric, positive on the diagonal, with a plausible background.
ScoreMatrix protein_like() {
  Random random(3);
  const auto score = [&](int32_t a, int32_t b) {
    return a == b ? 100 * uniform(random, 4, 10) : 100 * uniform(random, -4, 2);
  };
  ScoreMatrix matrix = small_matrix("ARNDCQEGHILKMFPSTWYVBZX", score, -3000);
  for (std::size_t a = 0; a < 23; ++a) matrix.dbcount[a] = uniform(random, 1000, 8000);
  return matrix;
}
const ScoreMatrix MATRIX = protein_like();

struct Built {
  LookupTable table;
  int32_t at(char letter, int32_t i) const { return table[residue_code(MATRIX, letter)][i]; }
};

Built build(const Family& family, const Params& p) {
  Built built;
  calc_profile2(MATRIX, built.table, family.aldat, &p);
  return built;
}

Built plain(const Family& family, const Params& p) {
  return {mlookgap(family.query.seq, family.query.len, MATRIX, p.LD_PEN, p.LI_PEN, &p)};
}

// A position where nothing but X and gaps was seen keeps the matrix column; one that no row reaches, too.
TEST(CalcProfile2, KeepsTheMatrixColumnsWhereNothingWasObserved) {
  for (const int32_t mode : {200, 202, 210, 212}) {
    const Params p = profile_params(mode);
    Family family(MATRIX, "AXRNDZ");
    const Built unchanged = plain(family, p);
    EXPECT_EQ(build(family, p).table.cells, unchanged.table.cells) << mode;
    family.add_row("WX");
    family.add_row("WW-", 3);
    const Built built = build(family, p);
    for (const char letter : std::string("ARNDCQEGHILKMFPSTWYVBZX!")) {
      EXPECT_EQ(built.at(letter, 2), unchanged.at(letter, 2));
      EXPECT_EQ(built.at(letter, 6), unchanged.at(letter, 6));
    }
    EXPECT_NE(built.at('W', 1), unchanged.at('W', 1));
  }
}

// A copy of the query brings no independent observation: method 2 gives the odds x of the matrix back,
// corrected for the profile's composition. By hand: a profile of one column Q = p x over a background p gives
// Q / ((p + m) / 2), where m averages Q and 50 times p. The weight factor multiplies the entries.
TEST(CalcProfile2, LeansTheBackgroundTowardsTheProfile) {
  const Family family(MATRIX, "W", {"W"});
  Params p = profile_params();
  p.POSWGTFAC = 2000;
  p.LD_PEN = 200;
  p.LI_PEN = 1250;
  const Built built = build(family, p), matrix = plain(family, p);
  const ResidueModel model = make_residue_model(MATRIX, p.PRECISION);
  const auto odds = [&](int32_t c) { return std::exp(model.lambda * matrix.table[c][1] / 100.0); };
  double total = 50;
  for (const int32_t c : model.residues) total += model.background[static_cast<std::size_t>(c)] * odds(c);
  for (const int32_t c : model.residues) {
    const double mean = (50 + odds(c)) / total;
    EXPECT_NEAR(built.table[c][1], 2e5 * std::log(odds(c) / ((1 + mean) / 2)) / model.lambda, 25.001);
    EXPECT_EQ(built.table[c][1] % 50, 0) << "scores, penalties and half of PRECISION are multiples of 50";
  }
  for (const char letter : {'X', '!', ' ', ':'}) EXPECT_EQ(built.at(letter, 1), matrix.at(letter, 1));
}

// The residue that rows show instead of the query's gains and stands above all others; ambiguous letters
// stand between their residues.
TEST(CalcProfile2, FollowsWhatWasObserved) {
  Family family(MATRIX, "ARNDCQEGHI");
  Random random(11);
  for (int32_t r = 0; r < 12; ++r) {
    std::string text = random_letters(random, "ARNDCQEGHILKMFPSTWYVBZX", 10);
    text[4] = 'W';
    family.add_row(text);
  }
  Params p = profile_params();
  for (p.PROFILE_WEIGHT_METHOD = 1; p.PROFILE_WEIGHT_METHOD <= 2; ++p.PROFILE_WEIGHT_METHOD) {
    const Built built = build(family, p);
    EXPECT_GT(built.at('W', 5), plain(family, p).at('W', 5) + 300);
    for (const char letter : std::string("CARNDQEGHILKMFPSTYV")) {
      EXPECT_LT(built.at(letter, 5), built.at('W', 5)) << letter;
    }
    for (int32_t i = 1; i <= 10; ++i) {
      for (const char* letters : {"BDN", "ZEQ"}) {
        const auto [low, high] = std::minmax({built.at(letters[1], i), built.at(letters[2], i)});
        EXPECT_LE(low, built.at(letters[0], i));
        EXPECT_GE(high, built.at(letters[0], i));
      }
    }
  }
}

// By hand: beside n sure sequences a row counts up to .02 / (1 + n / 20), and always up to .002. A sequence
// with two rows is one.
TEST(CalcProfile2, ADoubtfulRowCountsTheLessTheMoreAreSure) {
  struct Case {
    int32_t sure;
    double counts, does_not;
  };
  Params p = profile_params();
  set_keys(p, "PROBCUT2 0.02");
  for (const auto& [sure, counts, does_not] :
       {Case{0, .0199, .0201}, {1, .019, .0191}, {20, .0099, .0101}, {400, .0019, .0021}}) {
    const auto score_of_doubtful = [&, sure = sure](double significance) {
      Family family(MATRIX, "ARNDCQEGHI");
      const UTvector<SeqRec> sequences(static_cast<std::size_t>(sure), family.query);
      for (const SeqRec& sequence : sequences) {
        for (const char* row : {"ARN", "DCQEGHI"}) {
          family.add_row(row, row[0] == 'A' ? 1 : 4);
          family.aldat.rows.back().seq = &sequence;
          family.aldat.rows.back().significance = .0019;
        }
      }
      family.add_row("ARNDCQWGHI");
      family.aldat.rows.back().significance = significance;
      return build(family, p).at('W', 7);
    };
    EXPECT_GT(score_of_doubtful(counts), score_of_doubtful(does_not) + 50) << sure;
  }
}

// A score so low that its odds vanish stays what it is.
TEST(CalcProfile2, HoldsWhatFits32BitsAndRefusesTheRest) {
  constexpr int32_t VERY_LOW = -100'000'000;
  ScoreMatrix matrix = MATRIX;
  matrix.pairscore[residue_code(matrix, 'A')][residue_code(matrix, 'W')] = VERY_LOW;
  const Family family(matrix, "AAA", {"A-A"});
  Params p = profile_params(212);
  LookupTable table;
  calc_profile2(matrix, table, family.aldat, &p);
  EXPECT_EQ(table[residue_code(matrix, 'W')][1], VERY_LOW);
  for (const std::string key : {"POSWGTFAC", "PEN_FACTOR"}) {
    for (const char* value : {" 1e9", " -1e9", " nan"}) {
      p = profile_params(212);
      set_keys(p, key + value);
      EXPECT_EXIT(calc_profile2(matrix, table, family.aldat, &p), testing::ExitedWithCode(255),
                  "query position 1 would be .* \\(at most 2147483647\\):  Reduce PRECISION, " + key);
    }
  }
}

// Gaps were seen at the positions 4 and 5, which the entries 3 and 4 of the gap rows serve.
Built gap_rows(int32_t mode, double pen_factor, double weight_factor = 1) {
  const Family family(MATRIX, "ARNDCQEGHI", {"ARN--QEGHI", "VRN--QEGHL", "ARNDCKEGHI", "A"});
  Params p = profile_params(mode);
  p.LD_PEN = mode == 210 ? 800 : 200;
  p.LI_PEN = 1000;
  p.PEN_FACTOR = pen_factor;
  p.POSWGTFAC = weight_factor;
  Built built = build(family, p);
  const UTvector<int32_t> first = built.table.cells;
  calc_profile2(MATRIX, built.table, family.aldat, &p);
  EXPECT_EQ(built.table.cells, first) << "the next iteration starts from the configured penalties";
  return built;
}

// Cheaper where relatives have gaps, more expensive elsewhere; opening and extension change in the same
// proportion, by the factor that was asked for, by seven tenths at most.
TEST(GapRows, FollowTheGapsWithinTheirLimits) {
  const Built full = gap_rows(212, 1.0), half = gap_rows(212, 0.5), none = gap_rows(212, 0.0);
  const Built clear = gap_rows(212, 1.0, 1000.0), simple = gap_rows(210, 1.0),
              clear_simple = gap_rows(210, 1.0, 1000.0);
  for (int32_t i = 0; i < 10; ++i) {
    EXPECT_NEAR(full.at(' ', i), full.at(':', i) / 5.0, 1);
    EXPECT_NEAR(1000 - half.at(':', i), (1000 - full.at(':', i)) / 2.0, 1);
    EXPECT_EQ(none.at(':', i), 1000);
    const bool gap = i == 3 || i == 4;
    EXPECT_EQ(clear.at(':', i), gap ? 300 : 1700) << i;
    EXPECT_EQ(clear_simple.at(' ', i), gap ? 240 : 1360) << i;
    EXPECT_EQ(simple.at(' ', i) < 800, gap) << i;
    EXPECT_EQ(full.at(' ', i) < 200, gap) << i;
  }
}

}  // namespace
}  // namespace zelvan
