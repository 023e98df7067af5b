#include "stats/score_table.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "util/numbers.h"

namespace zelvan {
namespace {

constexpr double LOWEST_LPL = FIRST_LPL_TENTHS / 10.0;
constexpr double HIGHEST_LPL = (FIRST_LPL_TENTHS + LPL_BINS) / 10.0;

}  // namespace

double log_length_product(int32_t qlen, int32_t dblen) {
  const auto product = static_cast<int32_t>(static_cast<uint32_t>(qlen) * static_cast<uint32_t>(dblen));
  return product > 0 ? std::log(static_cast<double>(product)) : std::numeric_limits<double>::quiet_NaN();
}

ScoreSummary summarise_scores(const float* score, int32_t n) {
  ScoreSummary summary;
  summary.count = n;
  summary.lowscore = HIGHEST_LOWSCORE;
  for (int32_t i = 0; i < n; ++i) {
    const int32_t s = UTtruncate(static_cast<double>(score[i]));
    summary.lowscore = std::min(summary.lowscore, s);
    summary.sum += s;
    summary.sumsq += static_cast<double>(s) * s;
  }
  summary.mean = summary.sum / n;
  const double variance = (summary.sumsq - summary.sum * summary.sum / n) / n;
  summary.sd = std::sqrt(std::max(variance, 0.0));  // rounding can leave a negative value
  summary.maxscore = UTtruncate(summary.mean + SCORES_UP_TO_SD * summary.sd);
  return summary;
}

int64_t score_buckets(const ScoreSummary& summary) {
  return static_cast<int64_t>(summary.maxscore) - summary.lowscore + 1;
}

ScoreTable count_scores(const float* score, const int32_t* qlen, const int32_t* dblen, int32_t n,
                        const ScoreSummary& summary) {
  ScoreTable table;
  table.lowscore = summary.lowscore;
  table.nbuckets = static_cast<int32_t>(score_buckets(summary));
  table.counts.assign(static_cast<std::size_t>(table.nbuckets) * LPL_BINS, 0);
  for (int32_t i = 0; i < n; ++i) {
    const int32_t s = UTtruncate(static_cast<double>(score[i]));
    const double lpl = log_length_product(qlen[i], dblen[i]);
    const bool in_bins = lpl >= LOWEST_LPL && lpl <= HIGHEST_LPL;  // false for NaN
    if (s < summary.lowscore || s > summary.maxscore || !in_bins) continue;
    const int32_t bin = std::min(static_cast<int32_t>(10.0 * lpl) - FIRST_LPL_TENTHS, LPL_BINS - 1);
    ++table.bins[bin].count;
    table.bins[bin].tenths_sum += 10.0 * lpl;
    table.bins[bin].score_sum += s;
    ++table.counts[static_cast<std::size_t>(bin) * static_cast<std::size_t>(table.nbuckets) +
                   static_cast<std::size_t>(s - table.lowscore)];
  }
  return table;
}

RangeChoice ranges_of_width(const ScoreTable& table, int32_t width, int32_t minbuck) {
  RangeChoice choice;
  choice.width = width;
  for (int32_t first = 0; first < LPL_BINS; first += width) {
    LplRange range;
    range.first = first;
    range.last = std::min(first + width, LPL_BINS) - 1;
    for (int32_t bin = first; bin <= range.last; ++bin) {
      range.count += table.bins[bin].count;
      range.tenths += table.bins[bin].tenths_sum;
    }
    if (range.count <= minbuck || range.count == 0) continue;
    range.tenths /= range.count;
    choice.ranges.push_back(range);
  }
  return choice;
}

}  // namespace zelvan
