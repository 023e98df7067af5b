#include "stats/zscore_stats.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <sstream>

#include "stats/zscore_log.h"
#include "support/capture.h"
#include "support/small_alphabet.h"

namespace zelvan {
namespace {

// Scores of a database as chance and kinship would give them; only lengths and scores matter.
struct Scan {
  Params p = small_params(22);
  UTvector<SeqRec> seqs;
  UTvector<int32_t> scores;

  Scan() { p.PRECISION = 100; }
  void add(double score, int32_t residues) {
    SeqRec seq;
    seq.len = residues + 2;
    seqs.push_back(seq);
    scores.push_back(score < 0 ? -1 : static_cast<int32_t>(score) * 100);
  }
  int32_t n() const { return static_cast<int32_t>(seqs.size()); }
  ZStats stats() const { return do_stats(scores.data(), seqs.data(), n(), &p); }
  UTvector<int32_t> zscores(const ZStats& stats) const {
    return get_zscores(stats, scores.data(), seqs.data(), n(), &p);
  }
  UTvector<double> e_values() const { return get_e(zscores(stats()).data(), n(), &p); }
};

constexpr double SLOPE = 3.5;
constexpr double INTERCEPT = 12;
constexpr double SD = 4;

void add_unrelated(Scan& scan, int32_t count, Random& random) {
  std::lognormal_distribution<double> lengths(5.6, 0.8);
  const double scale = SD * std::sqrt(6.0) / std::numbers::pi;
  std::extreme_value_distribution<double> deviation(-scale * std::numbers::egamma, scale);
  for (int32_t k = 0; k < count; ++k) {
    const int32_t residues = 20 + static_cast<int32_t>(lengths(random));
    const double mean = INTERCEPT + SLOPE * std::log(residues);
    scan.add(std::max(0.0, mean + deviation(random) + 0.5), residues);
  }
}

TEST(ZscoreStats, ExpectAsManyAsChanceGives) {
  Random random(2);
  double below_one = 0, below_ten = 0;
  constexpr int32_t SCANS = 60;
  for (int32_t k = 0; k < SCANS; ++k) {
    Scan scan;
    add_unrelated(scan, 2000, random);
    for (const double e : scan.e_values()) {
      below_one += e < 1;
      below_ten += e < 10;
    }
  }
  EXPECT_NEAR(below_one / SCANS, 1, 0.4);
  EXPECT_NEAR(below_ten / SCANS, 10, 1.5);
}

TEST(ZscoreStats, RelatedSequencesNeitherLiftNorWidenTheBackground) {
  Random random(3);
  Scan alone;
  add_unrelated(alone, 2000, random);
  const ZStats expected = alone.stats();
  EXPECT_NEAR(expected.line.slope, SLOPE, 0.3);
  EXPECT_NEAR(expected.line.variance, SD * SD, 2);
  Scan mixed = alone;
  for (int32_t k = 0; k < 200; ++k) mixed.add(uniform(random, 150, 900), uniform(random, 200, 600));
  const ZStats stats = mixed.stats();
  EXPECT_NEAR(stats.line.slope, expected.line.slope, 0.05);
  EXPECT_NEAR(stats.line.intercept, expected.line.intercept, 0.2);
  EXPECT_NEAR(stats.line.variance, expected.line.variance, 0.3);
  const UTvector<double> e = mixed.e_values();
  for (std::size_t k = 2000; k < 2200; ++k) {
    EXPECT_EQ(stats.related[k], 1);
    EXPECT_LT(e[k], 1e-6);
  }
}

// z = 50 + 10 deviations; an extreme-value distribution of mean 50 and standard deviation 10.
TEST(ZscoreStats, ConvertScoresToZscoresAndThoseToChances) {
  ZStats stats;
  stats.line = {2, 10, 25, 3};
  Scan scan;
  scan.add(10, 1);     // ln 1 = 0: on the line
  scan.add(20, 1);     // two standard deviations above
  scan.add(23, 1000);  // 0.816 units below 10 + 2 ln 1000, 0.163 deviations
  scan.add(-1, 7);
  const UTvector<int32_t> z = scan.zscores(stats);
  EXPECT_EQ(z, (UTvector<int32_t>{5000, 7000, 4837, 0}));
  const UTvector<double> chances = get_p(z.data(), scan.n(), &scan.p);
  EXPECT_NEAR(chances[0], 1 - std::exp(-std::exp(-std::numbers::egamma)), 1e-12);
  EXPECT_NEAR(chances[1], 0.0422627, 1e-6);  // 1 - exp(-exp(-1.2825498 x 2 - 0.5772157))
  EXPECT_NEAR(chances[3], 1, 1e-12);
  const UTvector<double> expectations = get_e(z.data(), scan.n(), &scan.p);
  EXPECT_DOUBLE_EQ(expectations[1], 4 * chances[1]);
  const int32_t far = 100 * 1000;
  EXPECT_GT(get_p(&far, 1, &scan.p)[0], 0);
  EXPECT_LT(get_p(&far, 1, &scan.p)[0], 1e-50);
}

TEST(ZscoreStats, CopeWithFewAndEqualScores) {
  Scan scan;
  scan.add(-1, 0);
  EXPECT_EQ(scan.stats().line.nval, 0);
  for (int32_t k = 0; k < 3; ++k) scan.add(30, 100);
  EXPECT_EQ(scan.stats().line.intercept, 30);
  EXPECT_EQ(scan.zscores(scan.stats()), (UTvector<int32_t>{0, 5000, 5000, 5000}));
}

TEST(ZscoreLog, ShowsObservedBesideExpected) {
  Random random(5);
  Scan scan;
  add_unrelated(scan, 5000, random);
  scan.add(500, 300);
  const ZStats stats = scan.stats();
  SeqRec query;
  query.id = "a_query";
  query.len = 302;
  const TemporaryDirectory directory;
  directory.inside([&] { dump_stats(stats, scan.zscores(stats).data(), query, &scan.p); });

  const std::string log = file_content(directory.at("zelvan_dump_stats.log"));
  EXPECT_EQ(count_of(log,
                     "\n# Query: a_query Length: 300 Mode: 22\n"
                     "# Sequences: 5001, left out of the fit as related: 1\n"),
            1);
  std::istringstream bars(log.substr(log.find('\n', log.find("\n#    z ") + 1)));
  int32_t total = 0;
  double expected_total = 0, z, observed, expected;
  while (bars >> z >> observed >> expected) {
    bars.ignore(1000, '\n');  // the bar itself
    total += static_cast<int32_t>(observed);
    expected_total += expected;
    EXPECT_NEAR(observed, expected, 5 * std::sqrt(expected) + 2) << z;
  }
  EXPECT_EQ(total, 5001);
  EXPECT_NEAR(expected_total, 5001, 0.5);
}

}  // namespace
}  // namespace zelvan
