#include "stats/zscore_log.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "util/file_record.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr const char* LOG_NAME = "zelvan_dump_stats.log";
// Bars of the histogram: z-scores from 20 to 120, what lies beyond joins the first or last one.
constexpr int32_t FIRST_Z = 20;
constexpr int32_t LAST_Z = 120;
constexpr int32_t Z_STEP = 2;
constexpr int32_t LONGEST_BAR = 50;

void write_line(FILE* log, const ZStats& stats, const SeqRec& query, const Params* p) {
  const auto related = std::count(stats.related.begin(), stats.related.end(), uint8_t{1});
  std::fprintf(log, "# ZELVAN length-binned statistics\n# Query: %s Length: %d Mode: %d\n", query.id,
               residues(query), p->MODE);
  std::fprintf(log, "# Sequences: %d, left out of the fit as related: %d\n", stats.n,
               static_cast<int32_t>(related));
  std::fprintf(log, "# Mean score = %f + %f x ln(length), standard deviation %f\n", stats.line.intercept,
               stats.line.slope, std::sqrt(stats.line.variance));
  std::fputs("# z-score = 50 + 10 x (score - mean score) / standard deviation\n", log);
}

void write_bins(FILE* log, const ZStats& stats) {
  std::fputs("#\n# Scores by length\n#        lengths sequences    fitted mean score      line\n", log);
  for (const LengthBin& bin : stats.bins) {
    if (bin.sequences == 0) continue;
    std::fprintf(log, "%7d %7d %9d %9d", bin.first, bin.last, bin.sequences, bin.fitted);
    if (bin.fitted > 0) {
      std::fprintf(log, " %10.2f %9.2f", bin.score, mean_score(stats.line, bin.log_length));
    }
    std::fputc('\n', log);
  }
}

// Observed and expected numbers of z-scores from z up to the next bar.
struct Bar {
  int32_t z;
  int32_t observed;
  double expected;
};

UTvector<Bar> make_bars(const int32_t* zscores, int32_t n, const Params* p) {
  UTvector<Bar> bars;
  for (int32_t z = FIRST_Z; z <= LAST_Z; z += Z_STEP) bars.push_back({z, 0, 0});
  UTvector<int32_t> edges;
  for (const Bar& bar : bars) {
    // With a very large PRECISION it ends where the z-scores themselves end.
    using Limits = std::numeric_limits<int32_t>;
    const int64_t edge = int64_t{bar.z} * p->PRECISION;
    edges.push_back(static_cast<int32_t>(std::clamp<int64_t>(edge, Limits::min(), Limits::max())));
  }
  const UTvector<double> beyond = get_p(edges.data(), static_cast<int32_t>(edges.size()), p);
  for (std::size_t b = 0; b < bars.size(); ++b) {
    const double from = b == 0 ? 1 : beyond[b];
    const double to = b + 1 == bars.size() ? 0 : beyond[b + 1];
    bars[b].expected = n * (from - to);
  }
  for (int32_t k = 0; k < n; ++k) {
    const int32_t last = static_cast<int32_t>(bars.size()) - 1;
    const double place = std::floor((static_cast<double>(zscores[k]) / p->PRECISION - FIRST_Z) / Z_STEP);
    ++bars[static_cast<std::size_t>(std::clamp(place, 0.0, static_cast<double>(last)))].observed;
  }
  return bars;
}

// '=' up to the number observed, with '*' where the expected one stands.
UTstring bar_text(const Bar& bar, double per_character) {
  const auto characters = [&](double value) {
    return static_cast<std::size_t>(std::llround(value / per_character));
  };
  UTstring text(characters(bar.observed), '=');
  const std::size_t expected = characters(bar.expected);
  if (expected == 0) return text;
  text.resize(std::max(text.size(), expected), ' ');
  text[expected - 1] = '*';
  return text;
}

void write_histogram(FILE* log, const ZStats& stats, const int32_t* zscores, const Params* p) {
  const UTvector<Bar> bars = make_bars(zscores, stats.n, p);
  double highest = 1;
  for (const Bar& bar : bars) highest = std::max({highest, static_cast<double>(bar.observed), bar.expected});
  const double per_character = std::max(1.0, highest / LONGEST_BAR);
  std::fprintf(log, "#\n# z-scores: observed (=, %.1f sequences a character) and expected by chance (*)\n",
               per_character);
  std::fputs("#    z observed   expected\n", log);
  for (const Bar& bar : bars) {
    std::fprintf(log, "%6d %8d %10.2f %s\n", bar.z, bar.observed, bar.expected,
                 bar_text(bar, per_character).c_str());
  }
}

}  // namespace

void dump_stats(const ZStats& stats, const int32_t* zscores, const SeqRec& query, const Params* p) {
  FileRec log = UTfilemake(LOG_NAME, "w", 0);
  log.stream = UTfopen(LOG_NAME, "w", 1);
  write_line(log.stream, stats, query, p);
  write_bins(log.stream, stats);
  write_histogram(log.stream, stats, zscores, p);
  UTfilewritten(log);
  UTfileclose(log, 1);
}

}  // namespace zelvan
