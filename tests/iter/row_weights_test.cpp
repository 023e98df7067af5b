#include "iter/row_weights.h"

#include <gtest/gtest.h>

#include <map>
#include <numeric>

#include "iter/family.h"

namespace zelvan {
namespace {

const ScoreMatrix MATRIX = match_or_not("ACDEX", 500, -200);

bool resembles(const int8_t* a, const int8_t* b, int32_t first, int32_t last, double threshold) {
  int32_t same = 0;
  for (int32_t k = first; k <= last; ++k) same += a[k] == b[k] && a[k] != residue_code(MATRIX, ' ');
  return same / static_cast<double>(last - first + 1) >= threshold;
}

// The definition, written without any memory of the position before.
RowWeights directly(const AlignData& aldat, int32_t i, double threshold) {
  RowWeights d;
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
  for (int32_t k = first; k <= last; ++k) {
    std::map<int8_t, int32_t> count;
    const auto code_in = [&](std::size_t r) { return aldat.rows[r].aligned[static_cast<std::size_t>(k)]; };
    ++count[aldat.query->seq[k]];
    for (std::size_t r = 0; r < active.size(); ++r) {
      if (active[r]) ++count[code_in(r)];
    }
    const auto distinct = static_cast<double>(count.size());
    d.mean_distinct += (distinct - (count.contains(residue_code(MATRIX, ' ')) ? 1 : 0)) / (last - first + 1);
    d.query += 1 / (count[aldat.query->seq[k]] * distinct);
    for (std::size_t r = 0; r < active.size(); ++r) {
      if (active[r]) d.row[r] += 1 / (count[code_in(r)] * distinct);
    }
  }
  const double sum = std::accumulate(d.row.begin(), d.row.end(), d.query);
  d.query /= sum;
  for (double& w : d.row) w /= sum;
  return d;
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
      const RowWeights expected = directly(family.aldat, i, p.PIDTHRESH);
      const bool emptied = expected.nactive == 0 && directly(family.aldat, i, 1.0).nactive > 0;
      if (emptied) break;  // which would end the run
      move_row_weights(weights, i, family.aldat, MATRIX, &p);
      ASSERT_EQ(weights.nactive, expected.nactive) << "position " << i;
      if (weights.nactive == 0) continue;
      EXPECT_NEAR(weights.query, expected.query, 1e-12) << "position " << i;
      EXPECT_NEAR(weights.mean_distinct, expected.mean_distinct, 1e-12) << "position " << i;
      for (std::size_t r = 0; r < expected.row.size(); ++r) {
        EXPECT_NEAR(weights.row[r], expected.row[r], 1e-12) << "position " << i << " row " << r;
      }
      ++compared;
    }
  }
  EXPECT_GT(compared, 3000);
}

}  // namespace
}  // namespace zelvan
