#include "iter/row_weights.h"

#include <gtest/gtest.h>

#include <map>

#include "iter/family.h"

namespace {

const ScoreMatrix MATRIX = match_or_not("ACDEX", 500, -200);

// The definition, written without any memory of the position before.
struct Direct {
  double query = 0;
  std::vector<double> row;
  int32_t nactive = 0;
  double mean_distinct = 0;
};

bool resembles(const int8_t* a, const int8_t* b, int32_t first, int32_t last, double threshold) {
  int32_t same = 0;
  for (int32_t k = first; k <= last; ++k) same += a[k] == b[k] && a[k] != residue_code(MATRIX, ' ');
  return same / static_cast<double>(last - first + 1) >= threshold;
}

Direct directly(const AlignData& aldat, int32_t i, double threshold) {
  Direct d;
  d.row.assign(aldat.rows.size(), 0.0);
  std::vector<bool> active(aldat.rows.size());
  int32_t first = 1, last = aldat.query->len - 2;
  for (std::size_t r = 0; r < aldat.rows.size(); ++r) {
    const AlignRow& row = aldat.rows[r];
    active[r] = row.qstart <= i && i <= row.qend;
    if (!active[r]) continue;
    first = std::max(first, row.qstart);
    last = std::min(last, row.qend);
  }
  const auto filter = [&](const int8_t* reference, std::size_t from) {
    for (std::size_t r = from; r < aldat.rows.size(); ++r) {
      if (resembles(reference, aldat.rows[r].aligned.data(), first, last, threshold)) active[r] = false;
    }
  };
  if (threshold < 1.0) {
    filter(aldat.query->seq, 0);
    for (std::size_t k = 0; k < aldat.rows.size(); ++k) filter(aldat.rows[k].aligned.data(), k + 1);
  }
  d.nactive = static_cast<int32_t>(std::count(active.begin(), active.end(), true));
  if (d.nactive == 0) return d;
  double sum = 0;
  for (int32_t k = first; k <= last; ++k) {
    std::map<int8_t, int32_t> count;
    ++count[aldat.query->seq[k]];
    for (std::size_t r = 0; r < active.size(); ++r) {
      if (active[r]) ++count[aldat.rows[r].aligned[static_cast<std::size_t>(k)]];
    }
    const int32_t gaps = count.count(residue_code(MATRIX, ' ')) > 0 ? 1 : 0;
    d.mean_distinct += (static_cast<double>(count.size()) - gaps) / (last - first + 1);
    const auto share = [&](int8_t code) {
      return 1.0 / (static_cast<double>(count[code]) * static_cast<double>(count.size()));
    };
    d.query += share(aldat.query->seq[k]);
    sum += share(aldat.query->seq[k]);
    for (std::size_t r = 0; r < active.size(); ++r) {
      if (!active[r]) continue;
      d.row[r] += share(aldat.rows[r].aligned[static_cast<std::size_t>(k)]);
      sum += share(aldat.rows[r].aligned[static_cast<std::size_t>(k)]);
    }
  }
  d.query /= sum;
  for (double& w : d.row) w /= sum;
  return d;
}

void expect_direct(const RowWeights& weights, const AlignData& aldat, int32_t i, double threshold) {
  const Direct d = directly(aldat, i, threshold);
  ASSERT_EQ(weights.nactive, d.nactive) << "position " << i;
  if (d.nactive == 0) return;
  EXPECT_NEAR(weights.query, d.query, 1e-12) << "position " << i;
  EXPECT_NEAR(weights.mean_distinct, d.mean_distinct, 1e-12) << "position " << i;
  double sum = weights.query;
  for (std::size_t r = 0; r < d.row.size(); ++r) {
    EXPECT_NEAR(weights.row[r], d.row[r], 1e-12) << "position " << i << " row " << r;
    sum += weights.row[r];
  }
  EXPECT_NEAR(sum, 1.0, 1e-12);
}

TEST(RowWeights, EqualTheDefinitionOnRandomAlignments) {
  Random random(7);
  int32_t compared = 0;
  for (int32_t round = 0; round < 400; ++round) {
    const int32_t length = uniform(random, 1, 30);
    Family family(MATRIX, random_letters(random, "ACDE", length));
    for (int32_t r = uniform(random, 0, 11); r > 0; --r) {
      const int32_t first = uniform(random, 1, length);
      family.add_row(random_letters(random, "ACDEX-", uniform(random, 1, length - first + 1)), first);
    }
    constexpr double THRESHOLDS[] = {1.0, 0.95, 0.75, 0.5};  // many rows share just a half or three quarters
    Params p = profile_params();
    p.PIDTHRESH = THRESHOLDS[round % 4];
    RowWeights weights = start_row_weights(family.aldat, MATRIX);
    for (int32_t i = 0; i <= length; ++i) {
      const bool emptied =
          directly(family.aldat, i, 1.0).nactive > 0 && directly(family.aldat, i, p.PIDTHRESH).nactive == 0;
      if (emptied) break;  // which would end the run
      move_row_weights(weights, i, family.aldat, MATRIX, &p);
      expect_direct(weights, family.aldat, i, p.PIDTHRESH);
      compared += weights.nactive > 0 ? 1 : 0;
    }
  }
  EXPECT_GT(compared, 3000);
}

}  // namespace
