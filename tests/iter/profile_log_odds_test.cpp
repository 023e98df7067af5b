#include "iter/profile_log_odds.h"

#include <gtest/gtest.h>

#include <cmath>

#include "alignment_fixture.h"
#include "iter/residue_model.h"
#include "util/streams.h"

namespace {

using namespace fixture;

const char* const RESIDUES = "ARNDCQEGHILKMFPSTWYV";

// Random scores over the whole alphabet, asymmetric, positive on the diagonal, with a plausible background.
ScoreMatrix protein_like() {
  ScoreMatrix m = matrix_of("ARNDCQEGHILKMFPSTWYVBZX");
  std::mt19937 random(3);
  for (int32_t a = 0; a < 23; ++a) {
    for (int32_t b = 0; b < 23; ++b) {
      m.pairscore[a][b] = a == b ? 400 + 100 * static_cast<int32_t>(random() % 7)
                                 : 200 - 100 * static_cast<int32_t>(random() % 7);
    }
    m.dbcount[static_cast<std::size_t>(a)] = 1000 + static_cast<int32_t>(random() % 7000);
  }
  set_extremes(m);
  return m;
}
const ScoreMatrix MATRIX = protein_like();

struct Built {
  LookupTable table;
  int32_t at(char letter, int32_t i) const { return table[residue_code(MATRIX, letter)][i]; }
};

Built build(const AlignData& aldat, const Params& p) {
  Built built;
  calc_profile2(MATRIX, built.table, aldat, &p);
  return built;
}

LookupTable plain_table(const Sequence& query, const Params& p) {
  return mlookgap(query.codes.data(), query.record.len, MATRIX, p.LD_PEN, p.LI_PEN, &p);
}

TEST(CalcProfile2, KeepsTheMatrixColumnsWithoutRows) {
  const Sequence query(MATRIX, "ARNDXBZCCW");
  AlignData aldat;
  aldat.query = &query.record;
  for (const int32_t mode : {200, 202, 210, 212}) {
    const Params p = params(mode);
    EXPECT_EQ(build(aldat, p).table.cells, plain_table(query, p).cells) << mode;
  }
}

// A copy of the query brings no independent observation: method 2 gives the pair scores back.
TEST(CalcProfile2, IsTheMatrixForASecondCopyOfTheQuery) {
  const Sequence query(MATRIX, RESIDUES);
  AlignData aldat;
  aldat.query = &query.record;
  add_row(aldat, MATRIX, RESIDUES);
  const Built built = build(aldat, params());
  for (int32_t i = 1; i <= 20; ++i) {
    for (int32_t c = 0; c < 20; ++c) {
      EXPECT_NEAR(built.table[c][i], MATRIX.pairscore[query.codes[static_cast<std::size_t>(i)]][c], 1);
    }
    EXPECT_EQ(built.at('X', i), MATRIX.pairscore[query.codes[static_cast<std::size_t>(i)]][22]);
    EXPECT_EQ(built.at('!', i), -3000);
    EXPECT_EQ(built.at(' ', i), 100);
    EXPECT_EQ(built.at(':', i), 1100);
  }
}

TEST(CalcProfile2, ScalesWithPrecisionAndWeightFactor) {
  const Sequence query(MATRIX, RESIDUES);
  AlignData aldat;
  aldat.query = &query.record;
  add_row(aldat, MATRIX, "VRNDCQEGHILKMFPSTWYA");
  Params p = params();
  const Built once = build(aldat, p);
  p.POSWGTFAC = 2.0;
  const Built twice = build(aldat, p);
  p.POSWGTFAC = 0.0;
  const Built none = build(aldat, p);
  for (int32_t c = 0; c < 20; ++c) {
    EXPECT_NEAR(twice.table[c][7], 2 * once.table[c][7], 1);
    EXPECT_EQ(none.table[c][7], 0);
  }
}

// Where a row shows another residue than the query, that residue gains and the query's loses, most where the
// family is diverse; what neither shows stays behind.
TEST(CalcProfile2, FollowsWhatWasObserved) {
  const Sequence query(MATRIX, "ARNDCQEGHI");
  for (const int32_t method : {1, 2}) {
    AlignData aldat;
    aldat.query = &query.record;
    std::mt19937 random(11);
    for (int32_t r = 0; r < 12; ++r) {
      std::string text = random_text(random, RESIDUES, 10);
      text[4] = 'W';
      add_row(aldat, MATRIX, text);
    }
    Params p = params();
    p.PROFILE_WEIGHT_METHOD = method;
    const Built built = build(aldat, p);
    const int32_t before = MATRIX.pairscore[residue_code(MATRIX, 'C')][residue_code(MATRIX, 'W')];
    EXPECT_GT(built.at('W', 5), before + 300) << "method " << method;
    EXPECT_GT(built.at('W', 5), built.at('C', 5)) << "method " << method;
    for (const char letter : std::string("ARNDQEGHILKMFPSTYV")) {
      EXPECT_LT(built.at(letter, 5), built.at('W', 5)) << letter;
    }
  }
}

// Log-odds of the union of what an ambiguous letter stands for: between the two, whatever was observed.
TEST(CalcProfile2, PutsAmbiguousLettersBetweenTheirResidues) {
  const Sequence query(MATRIX, "DDDDDEEEEE");
  AlignData aldat;
  aldat.query = &query.record;
  add_row(aldat, MATRIX, "NNNBXQQZXE");
  const Built built = build(aldat, params());
  for (int32_t i = 1; i <= 10; ++i) {
    EXPECT_LE(std::min(built.at('D', i), built.at('N', i)), built.at('B', i));
    EXPECT_GE(std::max(built.at('D', i), built.at('N', i)), built.at('B', i));
    EXPECT_LE(std::min(built.at('E', i), built.at('Q', i)), built.at('Z', i));
    EXPECT_GE(std::max(built.at('E', i), built.at('Q', i)), built.at('Z', i));
  }
}

// A position where nothing but X and gaps was seen keeps the matrix column; one that no row reaches, too.
TEST(CalcProfile2, KeepsTheMatrixColumnWhereNothingWasObserved) {
  const Sequence query(MATRIX, "AXRNDC");
  AlignData aldat;
  aldat.query = &query.record;
  add_row(aldat, MATRIX, "WX", 1);
  add_row(aldat, MATRIX, "WW-", 3);
  const Params p = params();
  const Built built = build(aldat, p);
  const LookupTable plain = plain_table(query, p);
  for (int32_t c = 0; c < MATRIX.inlen; ++c) {
    EXPECT_EQ(built.table[c][2], plain[c][2]);
    EXPECT_EQ(built.table[c][6], plain[c][6]);
  }
  EXPECT_NE(built.at('W', 1), plain[residue_code(MATRIX, 'W')][1]);
}

TEST(CalcProfile2, LeavesFiniteBoundedEntriesInExtremeCases) {
  ScoreMatrix matrix = protein_like();
  matrix.dbcount.assign(matrix.dbcount.size(), 0);
  matrix.dbcount[0] = 2000000000;
  const Sequence query(matrix, RESIDUES);
  AlignData aldat;
  aldat.query = &query.record;
  add_row(aldat, matrix, "WWWWWWWWWWWWWWWWWWWW");
  Params p = params(212);
  p.POSWGTFAC = 1e9;
  p.PEN_FACTOR = 1e9;
  LookupTable table;
  calc_profile2(matrix, table, aldat, &p);
  for (const int32_t x : table.cells) EXPECT_LE(std::abs(x), 2147483647 / 16000);
}

struct GapRows {
  int32_t gap[12];
  int32_t opening[12];
};

GapRows gap_rows(int32_t mode, double pen_factor) {
  const Sequence query(MATRIX, "ARNDCQEGHI");
  AlignData aldat;
  aldat.query = &query.record;
  for (const char* text : {"ARN--QEGHI", "VRN--QEGHL", "ARNDCKEGHI", "A"}) add_row(aldat, MATRIX, text);
  Params p = params(mode);
  p.LD_PEN = mode == 210 ? 800 : 200;
  p.LI_PEN = 1000;
  p.PEN_FACTOR = pen_factor;
  const Built built = build(aldat, p);
  GapRows rows{};
  for (int32_t i = 0; i <= 10; ++i) {
    rows.gap[i] = built.at(' ', i);
    rows.opening[i] = built.at(':', i);
  }
  return rows;
}

// Entry i - 1 serves query position i. Gaps were seen at the positions 4 and 5.
TEST(GapRows, AreCheaperWhereRelativesHaveGaps) {
  for (const int32_t mode : {210, 212}) {
    const GapRows rows = gap_rows(mode, 1.0);
    const int32_t base = mode == 210 ? 800 : 200;
    for (const int32_t i : {3, 4}) {
      EXPECT_LT(rows.gap[i], base) << mode;
      EXPECT_GT(rows.gap[i], 0) << mode;
    }
    for (const int32_t i : {1, 2, 5, 8}) EXPECT_GT(rows.gap[i], base) << mode << " " << i;
    EXPECT_EQ(rows.gap[10], base) << "no query position reads it";
  }
}

// Opening and extension change in the same proportion, by the factor that was asked for.
TEST(GapRows, ScaleOpeningAndExtensionAlike) {
  const GapRows full = gap_rows(212, 1.0), half = gap_rows(212, 0.5), none = gap_rows(212, 0.0);
  for (int32_t i = 0; i <= 10; ++i) {
    EXPECT_NEAR(full.gap[i], full.opening[i] / 5.0, 1);
    EXPECT_NEAR(1000 - half.opening[i], (1000 - full.opening[i]) / 2.0, 1);
    EXPECT_EQ(none.opening[i], 1000);
    EXPECT_EQ(none.gap[i], 200);
  }
}

// The second iteration starts from the configured penalties, not from the first one's.
TEST(GapRows, DoNotDependOnTheOldTable) {
  const Sequence query(MATRIX, "ARNDCQEGHI");
  AlignData aldat;
  aldat.query = &query.record;
  add_row(aldat, MATRIX, "ARN--QEGHI");
  const Params p = params(212);
  LookupTable table;
  calc_profile2(MATRIX, table, aldat, &p);
  const UTvector<int32_t> first = table.cells;
  calc_profile2(MATRIX, table, aldat, &p);
  EXPECT_EQ(table.cells, first);
}

TEST(CalcProfile2, TracesWeights) {
  const Sequence query(MATRIX, "AR");
  AlignData aldat;
  aldat.query = &query.record;
  add_row(aldat, MATRIX, "AR");
  Params p = params();
  p.VERBOSE = 20000;
  UTinitfile();
  testing::internal::CaptureStderr();
  build(aldat, p);
  const std::string text = testing::internal::GetCapturedStderr();
  EXPECT_EQ(text.find("About to call dmlook\ni:1 j:0 querywgt:0.500000\n++i:1 j:0 seqwgt[j]:0.500000\n"
                      "i:1 j:1 sumwgt:2.000000\nIn calc_profile2: sumbgwgts "),
            0U)
      << text;
  EXPECT_NE(text.find("\nIn calc_profile2: sumposwgts 1\ni:2 j:0 querywgt:0.500000\n"), std::string::npos);
  EXPECT_NE(text.find("\nAbout to call FreeDLookup\nAbout to return from calc_profile2\n"),
            std::string::npos);
}

}  // namespace
