#include "stats/lpfit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>

#include "seq/database_info.h"
#include "stats/score_table.h"
#include "support/capture.h"
#include "support/settings.h"

namespace zelvan {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double LAMBDA = 0.23;
constexpr double K = 0.05;
constexpr int32_t QUERY_LENGTH = 300;

// A search: sequences, scores and the keys that matter, shipped defaults.
struct Search {
  Params p;
  BdbInfo info;
  std::vector<SeqRec> seqs;
  std::vector<int32_t> scores;

  Search() {
    std_out = stdout;
    std_err = stderr;
    set_keys(p,
             "PRECISION 100 PROB_TYPE 2 LPFIT_MINBUCK 300 LPFIT_MINRANGE 7 LPFIT_LPLBUCKETWIDTH 0.3 "
             "LPFIT_PRINT 0");
    p.binfo = &info;
  }
  // Unrelated sequences: scores extreme-value distributed, location ln(K m n) / lambda, scale 1 / lambda,
  // lengths log-normal around 300 residues.
  Search(int32_t unrelated, unsigned seed) : Search() {
    std::mt19937_64 random(seed);
    std::lognormal_distribution<double> lengths(std::log(300.0), 0.65);
    std::uniform_real_distribution<double> uniform(1e-15, 1.0);
    for (int32_t i = 0; i < unrelated; ++i) {
      const int32_t length = std::clamp(static_cast<int32_t>(lengths(random)), 8, 35000);
      const double gumbel = -std::log(-std::log(uniform(random)));
      const double score = (std::log(K * QUERY_LENGTH * length) + gumbel) / LAMBDA;
      add(length, static_cast<int32_t>(std::max(score, 0.0) * 100));
    }
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
  UTvector<double> significance(const UTvector<double>& x) const {
    return get_lpfit_probs(x, seqs.data(), n(), &p);
  }
  LpfitData fitted() const {
    LpfitData lpfit = setup_lpfit(QUERY_LENGTH, seqs.data(), scores.data(), n(), &p);
    EXPECT_EQ(do_lpfit(lpfit), lpfit.error);
    return lpfit;
  }
};

TEST(DoLpfit, EvaluesOfUnrelatedSequencesMeanWhatTheySay) {
  const struct {
    int32_t n;
    unsigned searches;
  } sizes[] = {{2000, 100}, {4000, 50}, {20000, 20}, {100000, 8}};
  double at_1 = 0, all_searches = 0;
  for (const auto& size : sizes) {
    double at_10 = 0;
    for (unsigned seed = 1; seed <= size.searches; ++seed) {
      const Search search(size.n, seed);
      LpfitData lpfit = search.fitted();
      ASSERT_EQ(lpfit.error, 0) << size.n << " sequences, seed " << seed;
      for (const double e : search.significance(apply_lpfit(lpfit))) {
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

// The hits of one sequence are worked out singly, too.
TEST(DoLpfit, RelatedAndEmptySequencesLeaveItAlmostAlone) {
  Search search(4000, 3);
  LpfitData clean = search.fitted();
  for (int i = 0; i < 40; ++i) {
    search.add(200 + 5 * i, 30000);
    search.add(0, -1);
  }
  LpfitData mixed = search.fitted();
  EXPECT_EQ(clean.error + mixed.error, 0);
  EXPECT_NEAR(mixed.Bmin, clean.Bmin, 0.05 * clean.Bmin);
  const UTvector<double> before = apply_lpfit(clean), after = apply_lpfit(mixed);
  for (std::size_t i = 0; i < before.size(); ++i) {
    EXPECT_NEAR(after[i], before[i], 0.25 + 0.05 * std::fabs(before[i]));
  }
  EXPECT_GT(after[4000], 30);
  EXPECT_EQ(after[4001], -INFINITE);
  const UTvector<double> significance = search.significance(after);
  EXPECT_EQ(significance[4001], INFINITE);
  for (std::size_t i = 0; i < after.size(); ++i) {
    const int32_t length = search.seqs[i].len - 2, score = search.scores[i];
    ASSERT_EQ(apply_single_lpfit(score, QUERY_LENGTH, length, mixed, &search.p), after[i]);
    ASSERT_EQ(get_single_lpfit_prob(score, QUERY_LENGTH, length, mixed, &search.p), significance[i]);
  }
}

TEST(DoLpfit, WhereNoExponentialFitsTheLocationIsALine) {
  Search search;
  double xy = 0, xx = 0;
  // It falls with length, ever faster.
  const struct {
    int32_t length;
    double location, scale;
  } ranges[] = {{90, 30, 2}, {200, 29, 3}, {444, 18.5, 5}};
  for (const auto& [length, location, scale] : ranges) {
    for (int k = 0; k < 2000; ++k) {
      const double score = location - scale * std::log(-std::log((k + 0.5) / 2000));
      search.add(length, static_cast<int32_t>(100 * score));
    }
    const double lpl = log_length_product(QUERY_LENGTH, length);
    xy += lpl * location;
    xx += lpl * lpl;
  }
  const LpfitData lpfit = search.fitted();
  ASSERT_EQ(lpfit.error, 0);
  EXPECT_EQ(lpfit.EXPORLIN, 1);
  EXPECT_EQ(lpfit.paramA[0], 0.0);
  EXPECT_NEAR(lpfit.paramA[1], xy / xx, 0.005);
  EXPECT_NEAR(lpfit.Bmin, (3 * 2 + 2 * 3 + 5) / 6.0, 0.05);
  EXPECT_NEAR(lpfit.Bmax, (3 * 5 + 2 * 3 + 2) / 6.0, 0.05);
}

TEST(DoLpfit, FailuresAreToldByCode) {
  EXPECT_EQ(Search().fitted().error, FIT_NO_HITS);
  Search small(600, 1);
  EXPECT_EQ(small.fitted().error, FIT_TOO_FEW_RANGES);
  small.p.LPFIT_MINBUCK = 100;
  EXPECT_EQ(small.fitted().error, 0);

  Search wide(4000, 1);
  wide.p.PRECISION = 1;
  std::fill_n(wide.scores.begin(), 40, INT32_MAX);
  EXPECT_EQ(wide.fitted().error, FIT_SCORES_TOO_WIDE);

  Search flat(4000, 1);
  flat.scores.assign(flat.scores.size(), 3000);
  EXPECT_EQ(flat.fitted().error, FIT_RANGE_FAILED);
}

// The ranges of one trace file have the hits of their bins in the other; with many hits they are of 0.4 lpl.
TEST(FitTrace, BinsAndRangesAgree) {
  Search search(20000, 1);
  search.p.LPFIT_PRINT = 1;
  const TemporaryDirectory directory;
  directory.inside([&] { EXPECT_EQ(search.fitted().error, 0); });
  std::map<int, int> of_bins, of_ranges;
  int bin = 0, tenths = 0, hits = 0, number = 0, width = 0;
  std::istringstream bins(file_content(directory.at("STAT_DATA")));
  for (double lpl = 0, sum = 0, mean = 0; bins >> bin >> tenths >> hits >> lpl >> sum >> mean >> number;) {
    EXPECT_EQ(tenths, bin + 40);
    EXPECT_EQ(static_cast<int>(10 * lpl), tenths);
    if (number > 0) of_bins[number] += hits;
  }
  std::istringstream steps(file_content(directory.at("PROCESSING")));
  for (std::string line; std::getline(steps, line);) {
    if (std::sscanf(line.c_str(), "m = %d, templpl = %d, lplscorerange = %d", &number, &bin, &hits) == 3) {
      of_ranges[number] = hits;
    }
    std::sscanf(line.c_str(), "templpl = %*d, lplrangewidth = %d", &width);
  }
  EXPECT_EQ(width, 4);
  EXPECT_GE(of_ranges.size(), 3U);
  EXPECT_EQ(of_bins, of_ranges);
}

// A = 10 + 2 lpl, B = 0.5 lpl within 4..5.
TEST(ApplyLpfit, LimitsTheScale) {
  LpfitData lpfit;
  lpfit.EXPORLIN = 1;
  lpfit.paramA[0] = 10;
  lpfit.paramA[1] = 2;
  lpfit.paramB[0] = 0;
  lpfit.paramB[1] = 0.5;
  lpfit.Bmin = 4;
  lpfit.Bmax = 5;
  lpfit.n = 4;
  lpfit.score = {60.9F, 60, 60, 60};
  lpfit.qlen = {100, 10, 1000, 100};
  lpfit.dblen = {100, 10, 1000, 0};
  const UTvector<double> x = apply_lpfit(lpfit);
  const double lpl = std::log(10000.0);
  EXPECT_NEAR(x[0], (60 - 10 - 2 * lpl) / (0.5 * lpl), 1e-12);
  EXPECT_NEAR(x[1], (60 - 10 - 2 * std::log(100.0)) / 4, 1e-12);
  EXPECT_NEAR(x[2], (60 - 10 - 2 * std::log(1e6)) / 5, 1e-12);
  EXPECT_EQ(x[3], -INFINITE);
  EXPECT_EQ(apply_lpfit(lpfit), x) << "it only reads the fit";
}

TEST(GetLpfitProbs, TheFactorFollowsTheKey) {
  Search search;
  search.add(100, 6000);
  search.add(900, 6000);
  search.p.DB_QUERY_RATIO = 7;
  const double factors[] = {1, 7, 10, 2};
  for (search.p.PROB_TYPE = 0; search.p.PROB_TYPE < 4; ++search.p.PROB_TYPE) {
    const UTvector<double> values = search.significance({2.0, -INFINITE});
    EXPECT_NEAR(values[0], factors[search.p.PROB_TYPE] * std::exp(-2.0), 1e-12) << search.p.PROB_TYPE;
    EXPECT_EQ(values[1], INFINITE);
  }
}

}  // namespace
}  // namespace zelvan
