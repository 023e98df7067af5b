#include "iter/profile.h"

#include <gtest/gtest.h>

#include "iter/family.h"
#include "support/capture.h"

namespace zelvan {
namespace {

const ScoreMatrix MATRIX = match_or_not("ACDEFGHIKLX", 500, -400, -3000);

using Texts = std::vector<std::string>;

// A query and hits, best first; significance exp(-score in matrix units).
struct Search {
  Family family;
  UTvector<SeqRec> hits;
  Params p;
  LpfitData lpfit;
  LookupTable table;

  Search(const std::string& query, const Texts& hit_texts) : family(MATRIX, query), p(profile_params()) {
    for (const std::string& text : hit_texts) hits.push_back(sequence_of(MATRIX, text));
    set_keys(p, "LD_PEN 1 LI_PEN 6 PROBCUT2 0.001 MIN_LEN 1 TOP_ONLY 1 PROFILE_WEIGHT_METHOD 0");
    lpfit.EXPORLIN = 1;
    lpfit.paramA[0] = lpfit.paramA[1] = lpfit.paramB[0] = lpfit.paramB[1] = 0.0;
    lpfit.Bmin = lpfit.Bmax = 1.0;
    table = mlookgap(family.query.seq, family.query.len, MATRIX, p.LD_PEN, p.LI_PEN, &p);
  }

  void run(const UTvector<int32_t>& scores, int32_t nsel) {
    UTvector<int32_t> order;
    for (std::size_t k = hits.size(); k > 0; --k) order.push_back(static_cast<int32_t>(k - 1));
    TracedHits traced;
    ResultRec results;
    results.seqs = hits.data();
    results.scores = scores.data();
    results.order = order.data();
    results.n = static_cast<int32_t>(hits.size());
    build_profile({family.query, MATRIX, table, lpfit, results}, nsel, traced, table, family.aldat, &p);
  }

  Texts rows() const {
    Texts texts;
    for (const AlignRow& row : family.aldat.rows) {
      std::string& text = texts.emplace_back();
      for (int32_t k = 1; k <= family.query.len - 2; ++k) {
        text += residue_letter(MATRIX, row.aligned[static_cast<std::size_t>(k)]);
      }
    }
    return texts;
  }
};

// TOP_ONLY keeps paths within the largest pair score of the best; without it every path counts.
TEST(BuildProfile, TakesLongSignificantPathsOfTheBestHits) {
  const std::string whole = "ACDEFGHIKL";
  const Texts pair = {whole, "CDEFGHI"}, three = {whole, "ACDEFGHIK", "CDEFGHIKL"};
  const Texts repeats = {"ACDEFGHIKLXXXXXXXXXXXXACDEFGHI"};
  const struct {
    Texts hits;
    UTvector<int32_t> scores;
    int32_t nsel;
    const char* settings;
    Texts rows;
  } cases[] = {
      {three, {5000, 4500, 4500}, 2, "", {whole, "ACDEFGHIK "}},
      {pair, {5000, 3500}, 7, "MIN_LEN 7", {whole, " CDEFGHI  "}},
      {pair, {5000, 3500}, 2, "PROBCUT2 4e-18", {whole}},  // exp(-40)
      {pair, {5000, 3500}, 2, "MIN_LEN 8", {whole}},
      {repeats, {5000}, 1, "", {whole}},
      {repeats, {5000}, 1, "TOP_ONLY 0", {whole, "ACDEFGHI  "}},
  };
  for (const auto& c : cases) {
    Search search(whole, c.hits);
    set_keys(search.p, "MIN_SCORE 12 MIN_ASCORE 30");
    set_keys(search.p, c.settings);
    search.run(c.scores, c.nsel);
    EXPECT_EQ(search.rows(), c.rows);
    EXPECT_EQ(search.p.MIN_SCORE, 1200);
    EXPECT_EQ(search.p.MIN_ASCORE, 3000);
  }
}

TEST(BuildProfile, PrintsWhatItCountedAndMadeOfIt) {
  Search search("ACD", {"ACD", "ACD"});
  set_keys(search.p, "PRINT_FRQ_TABS 1 PRINT_PROFILES 1");
  search.p.ITERATION = 4;
  EXPECT_EQ(printed([&] {
              search.run({1500, 1500}, 2);
            }),
            "# Frequency table derived from iteration: 4\n"
            "Posn:   A   C   D   E   F   G   H   I   K   L   X       ^   :   !\n"
            "   1:   2   0   0   0   0   0   0   0   0   0   0   0   0   0   0\n"
            "   2:   0   2   0   0   0   0   0   0   0   0   0   0   0   0   0\n"
            "   3:   0   0   2   0   0   0   0   0   0   0   0   0   0   0   0\n"
            "#\n# Lookup table (profile) derived from iteration: 4\n"
            "Posn:   A   C   D   E   F   G   H   I   K   L   X       ^   :   !\n"
            "   1:   5  -4  -4  -4  -4  -4  -4  -4  -4  -4  -4   0   0   0 -30\n"
            "   2:  -4   5  -4  -4  -4  -4  -4  -4  -4  -4  -4   0   0   0 -30\n"
            "   3:  -4  -4   5  -4  -4  -4  -4  -4  -4  -4  -4   0   0   0 -30\n");
}

}  // namespace
}  // namespace zelvan
