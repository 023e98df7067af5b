#include "iter/profile_log_odds.h"

#include <gtest/gtest.h>

#include <cmath>

#include "iter/family.h"
#include "iter/residue_model.h"
#include "support/capture.h"

namespace {

const char* const RESIDUES = "ARNDCQEGHILKMFPSTWYV";

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
    const Family alone(MATRIX, "ARNDXBZCCW");
    EXPECT_EQ(build(alone, p).table.cells, plain(alone, p).table.cells) << mode;
  }
  const Params p = profile_params();
  Family family(MATRIX, "AXRNDC", {"WX"});
  family.add_row("WW-", 3);
  const Built built = build(family, p), unchanged = plain(family, p);
  for (int32_t c = 0; c < MATRIX.inlen; ++c) {
    EXPECT_EQ(built.table[c][2], unchanged.table[c][2]);
    EXPECT_EQ(built.table[c][6], unchanged.table[c][6]);
  }
  EXPECT_NE(built.at('W', 1), unchanged.at('W', 1));
}

// A copy of the query brings no independent observation: method 2 gives the pair scores back, less for each residue
// what its frequency in this profile takes away, which is the same everywhere.
TEST(CalcProfile2, IsTheMatrixForASecondCopyOfTheQuery) {
  const std::string query = std::string(RESIDUES) + std::string(60, 'L');
  Family family(MATRIX, query);
  family.add_row(query);
  const Params p = profile_params();
  const Built built = build(family, p), matrix = plain(family, p);
  for (int32_t c = 0; c < 20; ++c) {
    const int32_t taken = matrix.table[c][1] - built.table[c][1];
    if (RESIDUES[c] == 'L') {
      EXPECT_GT(taken, 50);
    }
    for (int32_t i = 1; i <= 80; ++i) EXPECT_NEAR(matrix.table[c][i] - built.table[c][i], taken, 1);
  }
  for (const char letter : {'X', '!', ' ', ':'}) EXPECT_EQ(built.at(letter, 5), matrix.at(letter, 5));
}

// The correction by hand: a profile of one column Q = p' * x over a background p gives Q / ((p + m) / 2), where m
// averages Q and 50 times p.
TEST(CalcProfile2, LeansTheBackgroundTowardsTheProfile) {
  const Family family(MATRIX, "W", {"W"});
  const Params p = profile_params();
  const Built built = build(family, p), matrix = plain(family, p);
  const ResidueModel model = make_residue_model(MATRIX, p.PRECISION);
  double total = 50;
  for (const int32_t c : model.residues) {
    total +=
        model.background[static_cast<std::size_t>(c)] * std::exp(model.lambda * matrix.table[c][1] / 100.0);
  }
  for (const int32_t c : model.residues) {
    const double x = std::exp(model.lambda * matrix.table[c][1] / 100.0);
    const double mean = (50 + x) / total;
    EXPECT_NEAR(built.table[c][1], 100 * std::log(x / ((1 + mean) / 2)) / model.lambda, 1);
  }
}

TEST(CalcProfile2, ScalesWithTheWeightFactor) {
  const Family family(MATRIX, RESIDUES, {"VRNDCQEGHILKMFPSTWYA"});
  Params p = profile_params();
  const Built once = build(family, p);
  for (const double factor : {2.0, 0.0}) {
    p.POSWGTFAC = factor;
    const Built scaled = build(family, p);
    for (int32_t c = 0; c < 20; ++c) EXPECT_NEAR(scaled.table[c][7], factor * once.table[c][7], 1);
  }
}

// Where rows show another residue than the query, that residue gains and the query's loses, most where the
// family is diverse; what neither shows stays behind.
TEST(CalcProfile2, FollowsWhatWasObserved) {
  for (const int32_t method : {1, 2}) {
    Family family(MATRIX, "ARNDCQEGHI");
    Random random(11);
    for (int32_t r = 0; r < 12; ++r) {
      std::string text = random_letters(random, RESIDUES, 10);
      text[4] = 'W';
      family.add_row(text);
    }
    Params p = profile_params();
    p.PROFILE_WEIGHT_METHOD = method;
    const Built built = build(family, p);
    EXPECT_GT(built.at('W', 5), plain(family, p).at('W', 5) + 300) << "method " << method;
    for (const char letter : std::string("CARNDQEGHILKMFPSTYV")) {
      EXPECT_LT(built.at(letter, 5), built.at('W', 5)) << letter;
    }
  }
}

// Log-odds of the union of what an ambiguous letter stands for: between the two, whatever was observed.
TEST(CalcProfile2, PutsAmbiguousLettersBetweenTheirResidues) {
  const Built built = build(Family(MATRIX, "DDDDDEEEEE", {"NNNBXQQZXE"}), profile_params());
  for (int32_t i = 1; i <= 10; ++i) {
    for (const char* letters : {"BDN", "ZEQ"}) {
      const auto [low, high] = std::minmax({built.at(letters[1], i), built.at(letters[2], i)});
      EXPECT_LE(low, built.at(letters[0], i));
      EXPECT_GE(high, built.at(letters[0], i));
    }
  }
}

TEST(CalcProfile2, LeavesFiniteBoundedEntriesInExtremeCases) {
  ScoreMatrix matrix = MATRIX;
  matrix.dbcount.assign(matrix.dbcount.size(), 0);
  matrix.dbcount[0] = 2000000000;
  const Family family(matrix, RESIDUES, {"WWWWWWWWWWWWWWWWWWWW"});
  Params p = profile_params(212);
  set_keys(p, "POSWGTFAC 1e9 PEN_FACTOR 1e9");
  LookupTable table;
  calc_profile2(matrix, table, family.aldat, &p);
  for (const int32_t x : table.cells) EXPECT_LE(std::abs(x), 2147483647 / 16000);
}

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

// Entry i - 1 serves query position i. Gaps were seen at the positions 4 and 5.
TEST(GapRows, AreCheaperWhereRelativesHaveGaps) {
  for (const int32_t mode : {210, 212}) {
    const Built rows = gap_rows(mode, 1.0);
    const int32_t base = mode == 210 ? 800 : 200;
    for (const int32_t i : {3, 4}) {
      EXPECT_LT(rows.at(' ', i), base) << mode;
      EXPECT_GT(rows.at(' ', i), 0) << mode;
    }
    for (const int32_t i : {1, 2, 5, 8}) EXPECT_GT(rows.at(' ', i), base) << mode << " " << i;
    EXPECT_EQ(rows.at(' ', 10), base) << "no query position reads it";
  }
}

// Opening and extension change in the same proportion, by the factor that was asked for.
TEST(GapRows, ScaleOpeningAndExtensionAlike) {
  const Built full = gap_rows(212, 1.0), half = gap_rows(212, 0.5), none = gap_rows(212, 0.0);
  for (int32_t i = 0; i <= 10; ++i) {
    EXPECT_NEAR(full.at(' ', i), full.at(':', i) / 5.0, 1);
    EXPECT_NEAR(1000 - half.at(':', i), (1000 - full.at(':', i)) / 2.0, 1);
    EXPECT_EQ(none.at(':', i), 1000);
    EXPECT_EQ(none.at(' ', i), 200);
  }
}

// However clear the gaps are, a penalty changes by seven tenths of itself at most.
TEST(GapRows, StayWithinTheirLimits) {
  const Built rows = gap_rows(212, 1.0, 1000.0);
  for (int32_t i = 0; i < 10; ++i) EXPECT_EQ(rows.at(':', i), i == 3 || i == 4 ? 300 : 1700) << i;
}

TEST(CalcProfile2, TracesWeights) {
  const Family family(MATRIX, "AR", {"AR"});
  Params p = profile_params();
  p.VERBOSE = 20000;
  const std::string text = reported([&] { build(family, p); });
  EXPECT_EQ(text.find("About to call dmlook\ni:1 j:0 querywgt:0.500000\n++i:1 j:0 seqwgt[j]:0.500000\n"
                      "i:1 j:1 sumwgt:2.000000\nIn calc_profile2: sumbgwgts "),
            0U)
      << text;
  EXPECT_EQ(count_of(text, "\nIn calc_profile2: sumposwgts 1\ni:2 j:0 querywgt:0.500000\n"), 1);
  EXPECT_EQ(count_of(text, "\nAbout to call FreeDLookup\nAbout to return from calc_profile2\n"), 1);
}

}  // namespace
