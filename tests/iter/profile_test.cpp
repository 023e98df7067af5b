#include "iter/profile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>

#include "alignment_fixture.h"
#include "util/streams.h"

namespace {

using namespace fixture;

const ScoreMatrix MATRIX = identity_matrix("ACDEFGHIKLX", 500, -400);

// A query and hits, best first; significance exp(-score in matrix units).
struct Search {
  Sequence query;
  std::deque<Sequence> hits;
  Params p;
  LpfitData lpfit;
  LookupTable table;
  AlignData aldat;

  Search(const std::string& query_text, std::initializer_list<const char*> hit_texts, int32_t mode = 202)
      : query(MATRIX, query_text), p(params(mode)) {
    for (const char* text : hit_texts) hits.emplace_back(MATRIX, text);
    p.LD_PEN = 100;
    p.LI_PEN = 600;
    p.PROBCUT2 = 0.001F;
    p.MIN_LEN = 1;
    p.TOP_ONLY = 1;
    p.PROFILE_WEIGHT_METHOD = 0;
    lpfit.EXPORLIN = 1;
    lpfit.paramA[0] = lpfit.paramA[1] = 0.0;
    lpfit.paramB[0] = lpfit.paramB[1] = 0.0;
    lpfit.Bmin = lpfit.Bmax = 1.0;
    table = mlookgap(query.codes.data(), query.record.len, MATRIX, p.LD_PEN, p.LI_PEN, &p);
    aldat = initialise_aldat(query.record);
  }

  void run(const std::vector<int32_t>& raw_scores, int32_t nsel) {
    UTvector<SeqRec> seqs;
    UTvector<int32_t> scores, order;
    for (const Sequence& hit : hits) seqs.push_back(hit.record);
    for (const int32_t s : raw_scores) scores.push_back(s);
    for (std::size_t k = hits.size(); k > 0; --k) order.push_back(static_cast<int32_t>(k - 1));
    build_profile(query.record, seqs.data(), scores.data(), order.data(), static_cast<int32_t>(seqs.size()),
                  MATRIX, table, lpfit, nsel, aldat, &p);
  }

  std::string row(std::size_t r) const {
    std::string text;
    for (int32_t k = 1; k <= query.record.len - 2; ++k) {
      text += residue_letter(MATRIX, aldat.rows[r].aligned[static_cast<std::size_t>(k)]);
    }
    return text;
  }
};

TEST(BuildProfile, LaysHitsOutInQueryCoordinates) {
  for (const int32_t mode : {200, 202, 210, 212}) {
    Search search("ACDEFGHIKLACDEFGHIKL",
                  {"ACDEFGHIKLACDEFGHIKL",     // the query itself
                   "CCACDEFGHIACDEFGHIKL",     // K and L deleted, two residues in front
                   "ACDEFGHIKLCCACDEFGHIKL"},  // two residues inserted: no trace
                  mode);
    search.p.LD_PEN = search.p.MODE % 10 == 0 ? 400 : 100;
    search.table =
        mlookgap(search.query.codes.data(), 22, MATRIX, search.p.LD_PEN, search.p.LI_PEN, &search.p);
    search.run({10000, 8200, 9300}, 3);
    ASSERT_EQ(search.aldat.rows.size(), 3U) << mode;
    EXPECT_EQ(search.row(0), "ACDEFGHIKLACDEFGHIKL");
    EXPECT_EQ(search.row(1), "ACDEFGHI  ACDEFGHIKL");
    EXPECT_EQ(search.row(2), "ACDEFGHIKLACDEFGHIKL");
    const AlignRow& shifted = search.aldat.rows[1];
    EXPECT_EQ(shifted.qstart, 1);
    EXPECT_EQ(shifted.qend, 20);
    EXPECT_EQ(shifted.start, 3);
    EXPECT_EQ(shifted.end, 20);
    const double best = mode % 10 == 0 ? 90 - 8 : 90 - 7;
    EXPECT_NEAR(shifted.significance, std::exp(-best), 1e-45) << mode;
  }
}

TEST(BuildProfile, TakesTheBestHitsOnly) {
  Search search("ACDEFGHIKL", {"ACDEFGHIKL", "ACDEFGHIK", "CDEFGHIKL"});
  search.run({5000, 4500, 4500}, 2);
  ASSERT_EQ(search.aldat.rows.size(), 2U);
  EXPECT_EQ(search.row(1), "ACDEFGHIK ");
  Search all("ACDEFGHIKL", {"ACDEFGHIKL", "ACDEFGHIK"});
  all.run({5000, 4500}, 7);
  EXPECT_EQ(all.aldat.rows.size(), 2U);
}

TEST(BuildProfile, LeavesOutShortAndInsignificantPaths) {
  Search strict("ACDEFGHIKL", {"ACDEFGHIKL", "CDEFGHI"});
  strict.p.PROBCUT2 = static_cast<float>(std::exp(-40.0));
  strict.run({5000, 3500}, 2);
  EXPECT_EQ(strict.aldat.rows.size(), 1U);
  Search longer("ACDEFGHIKL", {"ACDEFGHIKL", "CDEFGHI"});
  longer.p.MIN_LEN = 8;
  longer.run({5000, 3500}, 2);
  EXPECT_EQ(longer.aldat.rows.size(), 1U);
}

// TOP_ONLY keeps paths within the largest pair score of the best; without it every path counts.
TEST(BuildProfile, KeepsOneRowPerPath) {
  const std::initializer_list<const char*> repeats = {"ACDEFGHIKLXXXXXXXXXXXXACDEFGHI"};
  Search top("ACDEFGHIKL", repeats);
  top.run({5000}, 1);
  EXPECT_EQ(top.aldat.rows.size(), 1U);
  Search every("ACDEFGHIKL", repeats);
  every.p.TOP_ONLY = 0;
  every.p.MIN_ASCORE = 3000;
  every.run({5000}, 1);
  ASSERT_EQ(every.aldat.rows.size(), 2U);
  EXPECT_EQ(every.row(1), "ACDEFGHI  ");
}

TEST(BuildProfile, CountsWhatItAligned) {
  UTinitfile();
  Search printed("ACD", {"ACD", "ACD"});
  printed.p.PRINT_FRQ_TABS = 1;
  printed.p.ITERATION = 4;
  testing::internal::CaptureStdout();
  printed.run({1500, 1500}, 2);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "# Frequency table derived from iteration: 4\n"
            "Posn:   A   C   D   E   F   G   H   I   K   L   X       ^   :   !\n"
            "   1:   2   0   0   0   0   0   0   0   0   0   0   0   0   0   0\n"
            "   2:   0   2   0   0   0   0   0   0   0   0   0   0   0   0   0\n"
            "   3:   0   0   2   0   0   0   0   0   0   0   0   0   0   0   0\n");
}

TEST(BuildProfile, RestoresTheThresholdAndOtherMethodsLeaveTheTable) {
  Search search("ACDEFGHIKL", {"ACDEFGHIKL", "ACDEFGH"});
  search.p.PROFILE_WEIGHT_METHOD = 3;
  search.p.MIN_SCORE = 1234;
  search.p.MIN_ASCORE = 77;
  const UTvector<int32_t> before = search.table.cells;
  search.run({5000, 3500}, 2);
  EXPECT_EQ(search.table.cells, before);
  EXPECT_EQ(search.aldat.rows.size(), 2U);
  EXPECT_EQ(search.p.MIN_SCORE, 1234);
  EXPECT_EQ(search.p.MIN_ASCORE, 77);
}

TEST(BuildProfile, WithoutHitsKeepsTheQueryAlone) {
  Search search("ACDEFGHIKL", {"ACDEFGHIKL"});
  const UTvector<int32_t> matrix_table = search.table.cells;
  search.p.PROFILE_WEIGHT_METHOD = 2;
  search.run({5000}, 0);
  EXPECT_TRUE(search.aldat.rows.empty());
  EXPECT_EQ(search.table.cells, matrix_table);
}

// Method 0 makes gaps free in the modes 210 and 212: the next iteration still aligns.
TEST(BuildProfile, AlignsWithTheFreeGapsOfMethodZero) {
  for (const int32_t mode : {210, 212}) {
    Search search("ACDEFGHIKLACDEFGHIKL", {"ACDEFGHIKLACDEFGHIKL", "CDEFGHIKLACD"}, mode);
    for (int32_t iteration = 0; iteration < 3; ++iteration) {
      search.aldat = initialise_aldat(search.query.record);
      search.run({10000, 6000}, 2);
      ASSERT_EQ(search.aldat.rows.size(), 2U) << mode << " " << iteration;
      EXPECT_EQ(search.row(0), "ACDEFGHIKLACDEFGHIKL");
      EXPECT_EQ(search.table[residue_code(MATRIX, ' ')][7], 0);
    }
  }
}

TEST(BuildProfileDeath, RefusesAnUnknownMode) {
  UTinitfile();
  Search search("ACDEFGHIKL", {"ACDEFGHIKL"});
  search.p.MODE = 17;
  EXPECT_EXIT(search.run({5000}, 1), testing::ExitedWithCode(255), "Unrecognised mode in build_profile");
}

}  // namespace
