#include "stats/lpfit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "seq/database_info.h"
#include "stats/score_table.h"
#include "support/capture.h"
#include "synthetic_scores.h"

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

// A search: sequences, scores and the keys that matter, shipped defaults.
struct Search {
  Params p;
  BdbInfo info;
  std::vector<SeqRec> seqs;
  std::vector<int32_t> scores;
  int32_t query_length = QUERY_LENGTH;

  Search() {
    std_out = stdout;
    std_err = stderr;
    p.PRECISION = 100;
    p.PROB_TYPE = 2;
    p.LPFIT_MINBUCK = 300;
    p.LPFIT_MINRANGE = 7;
    p.LPFIT_LPLBUCKETWIDTH = 0.3;
    p.binfo = &info;
  }
  explicit Search(const SyntheticScores& synthetic) : Search() {
    for (std::size_t i = 0; i < synthetic.length.size(); ++i) add(synthetic.length[i], synthetic.score[i]);
  }
  void add(int32_t length, int32_t score) {
    SeqRec seq;
    seq.len = length + 2;
    seqs.push_back(seq);
    scores.push_back(score);
    info.nres += length;
    ++info.nseq;
  }
  int32_t n() const { return static_cast<int32_t>(seqs.size()); }
  LpfitData setup() const { return setup_lpfit(query_length, seqs.data(), scores.data(), n(), &p); }
  int32_t error() const {
    LpfitData lpfit = setup();
    return do_lpfit(lpfit);
  }
};

// A fit that is known: A = 10 + 2 lpl, B = 0.5 lpl within 4..5.
LpfitData known_fit() {
  LpfitData lpfit;
  lpfit.EXPORLIN = 1;
  lpfit.paramA[1] = 10, lpfit.paramA[2] = 2;
  lpfit.paramB[1] = 0, lpfit.paramB[2] = 0.5;
  lpfit.Bmin = 4, lpfit.Bmax = 5;
  return lpfit;
}

TEST(DoLpfit, EvaluesOfUnrelatedSequencesMeanWhatTheySay) {
  const struct {
    int32_t n;
    unsigned searches;
  } sizes[] = {{2000, 100}, {4000, 50}, {20000, 20}, {100000, 8}};
  double at_1 = 0, all_searches = 0;
  for (const auto& size : sizes) {
    double at_10 = 0;
    for (unsigned seed = 1; seed <= size.searches; ++seed) {
      const Search search{SyntheticScores(size.n, seed)};
      LpfitData lpfit = search.setup();
      ASSERT_EQ(do_lpfit(lpfit), 0) << size.n << " sequences, seed " << seed;
      const UTvector<double> evalues =
          get_lpfit_probs(apply_lpfit(lpfit), search.seqs.data(), search.n(), &search.p);
      for (const double e : evalues) {
        at_1 += e <= 1;
        at_10 += e <= 10;
      }
      EXPECT_NEAR(lpfit.Bmin * LAMBDA, 1, 0.15);
      EXPECT_NEAR(lpfit.Bmax * LAMBDA, 1, 0.15);
    }
    EXPECT_GT(at_10 / size.searches, 6.5) << size.n;
    EXPECT_LT(at_10 / size.searches, 12.5) << size.n;
    all_searches += size.searches;
  }
  EXPECT_GT(at_1 / all_searches, 0.65);
  EXPECT_LT(at_1 / all_searches, 1.3);
}

TEST(DoLpfit, RelatedAndEmptySequencesLeaveItAlmostAlone) {
  Search search{SyntheticScores(4000, 3)};
  LpfitData clean = search.setup();
  ASSERT_EQ(do_lpfit(clean), 0);
  for (int i = 0; i < 40; ++i) {
    search.add(200 + 5 * i, 30000);
    search.add(0, -1);
  }
  LpfitData mixed = search.setup();
  ASSERT_EQ(do_lpfit(mixed), 0);
  EXPECT_NEAR(mixed.Bmin, clean.Bmin, 0.05 * clean.Bmin);
  const UTvector<double> before = apply_lpfit(clean);
  const UTvector<double> after = apply_lpfit(mixed);
  for (std::size_t i = 0; i < before.size(); ++i)
    EXPECT_NEAR(after[i], before[i], 0.25 + 0.05 * std::fabs(before[i]));
  EXPECT_GT(after[4000], 30);
  EXPECT_EQ(after[4001], -INFINITE);
  EXPECT_EQ(get_lpfit_probs(after, search.seqs.data(), search.n(), &search.p)[4001], INFINITE);
}

TEST(DoLpfit, WhereNoExponentialFitsTheLocationIsALine) {
  Search search;
  const double locations[3] = {30, 29, 18.5};  // falls with length, ever faster
  const int32_t lengths[3] = {90, 200, 444};
  for (int group = 0; group < 3; ++group) {
    for (int k = 0; k < 2000; ++k) {
      const double score = locations[group] - 3 * std::log(-std::log((k + 0.5) / 2000));
      search.add(lengths[group], static_cast<int32_t>(100 * score));
    }
  }
  LpfitData lpfit = search.setup();
  ASSERT_EQ(do_lpfit(lpfit), 0);
  EXPECT_EQ(lpfit.EXPORLIN, 1);
  EXPECT_EQ(lpfit.paramA[1], 0.0);
  double xy = 0, xx = 0;
  for (int group = 0; group < 3; ++group) {
    const double lpl = log_length_product(QUERY_LENGTH, lengths[group]);
    xy += lpl * locations[group];
    xx += lpl * lpl;
  }
  EXPECT_NEAR(lpfit.paramA[2], xy / xx, 0.005);
  EXPECT_NEAR(lpfit.Bmin, 3, 0.03);
}

TEST(DoLpfit, FailuresAreToldByCode) {
  EXPECT_EQ(Search().error(), FIT_NO_HITS);
  EXPECT_EQ(Search(SyntheticScores(600, 1)).error(), FIT_TOO_FEW_RANGES);
  Search small{SyntheticScores(600, 1)};
  small.p.LPFIT_MINBUCK = 100;
  EXPECT_EQ(small.error(), 0);
  small.query_length = 0;
  EXPECT_EQ(small.error(), FIT_TOO_FEW_RANGES);

  Search wide{SyntheticScores(4000, 1)};
  wide.p.PRECISION = 1;
  for (int i = 0; i < 40; ++i) wide.scores[static_cast<std::size_t>(i)] = INT32_MAX - i;
  EXPECT_EQ(wide.error(), FIT_SCORES_TOO_WIDE);

  Search flat{SyntheticScores(4000, 1)};
  flat.scores.assign(flat.scores.size(), 3000);
  EXPECT_EQ(flat.error(), FIT_RANGE_FAILED);
}

TEST(SetupLpfit, DividesScoresAndLeavesOutThePads) {
  Search search;
  search.add(120, 2899);
  const LpfitData lpfit = search.setup();
  EXPECT_EQ(lpfit.n, 1);
  EXPECT_EQ(lpfit.score[0], 28.99F);
  EXPECT_EQ(lpfit.qlen[0], 300);
  EXPECT_EQ(lpfit.dblen[0], 120);
  EXPECT_EQ(lpfit.paramA[1], -2.0);
  EXPECT_EQ(lpfit.paramB[3], -1.0);
}

TEST(SetupLpfit, TellsItsKeysAndDumpsItsInput) {
  Search search;
  search.add(120, 2899);
  search.add(0, -1);
  search.p.VERBOSE = 1000;
  std::string keys;
  const std::string dump = written([&](FILE* stream) {
    std_out = stream;
    keys = reported([&] { search.setup(); });
    std_out = stdout;
  });
  EXPECT_EQ(keys, "p->LPFIT_MINBUCK:300\np->LPFIT_MINRANGE:7\np->LPFIT_LPLBUCKETWIDTH:0.3\n");
  EXPECT_EQ(dump,
            "##START DUMP OF LPFIT INPUT\n##lpfit->n: 2\n##lpfit->minbuck: 300\n##lpfit->minrange: 7\n"
            "##lpfit->lplbucketwidth: 0.300000\n#!300 120 28.990000\n#!300 0 -0.010000\n"
            "##END DUMP OF LPFIT INPUT\n");
}

TEST(ApplyLpfit, ShiftsTheCoefficientsOnceAndLimitsTheScale) {
  LpfitData lpfit = known_fit();
  lpfit.n = 5;
  lpfit.score = {60.9F, 60, 60, 60, 60};
  lpfit.qlen = {100, 10, 1000, 46341, 100};
  lpfit.dblen = {100, 10, 1000, 46341, 0};
  const UTvector<double> x = apply_lpfit(lpfit);
  EXPECT_EQ(lpfit.paramA[0], 10);
  EXPECT_EQ(lpfit.paramA[1], 2);
  EXPECT_EQ(lpfit.paramB[1], 0.5);
  const double lpl = std::log(10000.0);
  EXPECT_NEAR(x[0], (60 - 10 - 2 * lpl) / (0.5 * lpl), 1e-12);
  EXPECT_NEAR(x[1], (60 - 10 - 2 * std::log(100.0)) / 4, 1e-12);
  EXPECT_NEAR(x[2], (60 - 10 - 2 * std::log(1e6)) / 5, 1e-12);
  EXPECT_EQ(x[3], -INFINITE);  // the product is beyond 32 bits
  EXPECT_EQ(x[4], -INFINITE);
}

TEST(ApplyLpfit, AnUnknownFormGivesNoNumbers) {
  LpfitData lpfit = known_fit();
  lpfit.EXPORLIN = 2;
  lpfit.n = 2;
  lpfit.score = {60, 60};
  lpfit.qlen = {100, 100};
  lpfit.dblen = {100, 0};
  for (const double x : apply_lpfit(lpfit)) EXPECT_TRUE(std::isnan(x));
}

TEST(GetLpfitProbs, TheFactorFollowsTheKey) {
  Search search;
  search.add(100, 6000);
  search.add(900, 6000);
  search.p.DB_QUERY_RATIO = 7;
  const double p = std::exp(-2.0);
  const struct {
    int32_t type;
    double expected;
  } cases[] = {{0, p}, {1, 7 * p}, {2, 10 * p}, {3, 2 * p}};
  for (const auto& c : cases) {
    search.p.PROB_TYPE = c.type;
    EXPECT_NEAR(get_lpfit_probs({2.0, 2.0}, search.seqs.data(), 2, &search.p)[0], c.expected, 1e-12)
        << c.type;
    EXPECT_EQ(get_lpfit_probs({-INFINITE, 2.0}, search.seqs.data(), 2, &search.p)[0], INFINITE);
  }
  search.p.PROB_TYPE = 4;
  EXPECT_TRUE(std::isnan(get_lpfit_probs({2.0, 2.0}, search.seqs.data(), 2, &search.p)[0]));
}

TEST(GetSingleLpfitProb, AgreesWithTheWholeList) {
  const Search search{SyntheticScores(4000, 9)};
  LpfitData lpfit = search.setup();
  ASSERT_EQ(do_lpfit(lpfit), 0);
  const UTvector<double> x = apply_lpfit(lpfit);
  const UTvector<double> all = get_lpfit_probs(x, search.seqs.data(), search.n(), &search.p);
  for (std::size_t i = 0; i < all.size(); ++i) {
    const int32_t length = search.seqs[i].len - 2;
    ASSERT_EQ(apply_single_lpfit(search.scores[i], QUERY_LENGTH, length, lpfit, &search.p), x[i]);
    ASSERT_EQ(get_single_lpfit_prob(search.scores[i], QUERY_LENGTH, length, lpfit, &search.p), all[i]);
  }
}

TEST(Lpfit, PlaceholdersAndRelease) {
  EXPECT_EQ(dud_lpfit(3.5, 2), (UTvector<double>{3.5, 3.5}));
  LpfitData lpfit = Search(SyntheticScores(10, 1)).setup();
  freeup_lpfit(lpfit);
  EXPECT_TRUE(lpfit.score.empty() && lpfit.qlen.empty() && lpfit.dblen.empty());
  EXPECT_EQ(lpfit.n, 0);
}

}  // namespace
