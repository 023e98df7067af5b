#include "stats/zscore_stats.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "util/numbers.h"

namespace zelvan {
namespace {

constexpr double BIN_WIDTH = 0.2;       // of ln(length)
constexpr double RELATED_BELOW = 0.05;  // E-value
constexpr int32_t REFITS = 4;
constexpr double Z_MEAN = 50;
constexpr double Z_SD = 10;

// Of the standard extreme-value distribution, exp(-exp(-x)).
constexpr double EV_MEAN = std::numbers::egamma;
const double EV_SD = std::numbers::pi / std::sqrt(6.0);
const double EV_QUARTILES = std::log(std::log(4.0) / std::log(4.0 / 3.0));  // upper less lower
const double EV_MEDIAN = -std::log(std::log(2.0));

// One for every sequence that has a score.
struct Point {
  int32_t seqno;
  std::size_t bin;
  double log_length;
  double score;  // matrix units
};

bool has_score(int32_t score, const SeqRec& seq) {
  return score >= 0 && residues(seq) > 0;
}

double log_length(const SeqRec& seq) {
  return std::log(static_cast<double>(residues(seq)));
}

// Probability of a score at least so many standard deviations above the mean.
double tail_probability(double deviations) {
  return -std::expm1(-std::exp(-EV_SD * deviations - EV_MEAN));
}

// The points of a scan, made whenever they are gone through: of many millions of sequences they would not be
// kept. The logarithms of usual lengths are.
struct Points {
  const int32_t* scores;
  const SeqRec* seqs;
  int32_t n;
  double precision;
  UTvector<double> logarithms;  // [residues]
  int64_t count = 0;
};

template <class Use>
void each_point(const Points& points, Use use) {
  for (int32_t k = 0; k < points.n; ++k) {
    const SeqRec& seq = points.seqs[k];
    if (!has_score(points.scores[k], seq)) continue;
    const auto length = static_cast<std::size_t>(residues(seq));
    const double x = length < points.logarithms.size() ? points.logarithms[length] : log_length(seq);
    const double score = static_cast<double>(points.scores[k]) / points.precision;
    use(Point{k, static_cast<std::size_t>(x / BIN_WIDTH), x, score});
  }
}

Points collect_points(const int32_t* scores, const SeqRec* seqs, int32_t n, UTvector<LengthBin>& bins,
                      const Params* p) {
  constexpr std::size_t USUAL_LENGTHS = 8192;
  Points points = {scores, seqs, n, static_cast<double>(p->PRECISION), UTvector<double>(USUAL_LENGTHS), 0};
  for (std::size_t length = 1; length < USUAL_LENGTHS; ++length) {
    points.logarithms[length] = std::log(static_cast<double>(length));
  }
  each_point(points, [&](const Point& point) {
    if (bins.size() <= point.bin) bins.resize(point.bin + 1);
    ++bins[point.bin].sequences;
    ++points.count;
  });
  for (std::size_t b = 0; b < bins.size(); ++b) {
    const auto number = static_cast<double>(b);
    bins[b].first = static_cast<int32_t>(std::ceil(std::exp(BIN_WIDTH * number)));
    bins[b].last = static_cast<int32_t>(std::ceil(std::exp(BIN_WIDTH * (number + 1)))) - 1;
  }
  return points;
}

double quantile(UTvector<double>& values, double fraction) {
  const auto rank = static_cast<std::ptrdiff_t>(fraction * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), values.begin() + rank, values.end());
  return values[static_cast<std::size_t>(rank)];
}

// The weighted least-squares line through the bins' log_length and score; the variance is left as it is.
void fit_line(const UTvector<LengthBin>& bins, LineFit& line) {
  double weight = 0, mean_x = 0, mean_y = 0;
  line.nval = 0;
  for (const LengthBin& bin : bins) {
    const double w = bin.fitted;
    weight += w;
    mean_x += w * bin.log_length;
    mean_y += w * bin.score;
    line.nval += bin.fitted > 0 ? 1 : 0;
  }
  line.slope = line.intercept = 0;
  if (line.nval == 0) return;
  mean_x /= weight;
  mean_y /= weight;
  double xx = 0, xy = 0;
  for (const LengthBin& bin : bins) {
    const double w = bin.fitted;
    xx += w * (bin.log_length - mean_x) * (bin.log_length - mean_x);
    xy += w * (bin.log_length - mean_x) * (bin.score - mean_y);
  }
  if (line.nval > 1) line.slope = xy / xx;
  line.intercept = mean_y - line.slope * mean_x;
}

// The robust start: up to a quarter of the sequences may be related.
void fit_medians(const Points& points, ZStats& stats) {
  UTvector<UTvector<double>> members(stats.bins.size());
  for (std::size_t b = 0; b < members.size(); ++b) {
    members[b].reserve(static_cast<std::size_t>(stats.bins[b].sequences));
  }
  each_point(points, [&](const Point& point) {
    members[point.bin].push_back(point.score);
    stats.bins[point.bin].log_length += point.log_length;
  });
  for (std::size_t b = 0; b < stats.bins.size(); ++b) {
    LengthBin& bin = stats.bins[b];
    if (bin.sequences == 0) continue;
    bin.fitted = bin.sequences;
    bin.log_length /= bin.sequences;
    bin.score = quantile(members[b], 0.5);
  }
  fit_line(stats.bins, stats.line);
  members = UTvector<UTvector<double>>();
  UTvector<double> residuals;
  residuals.reserve(static_cast<std::size_t>(points.count));
  each_point(points, [&](const Point& point) {
    residuals.push_back(point.score - mean_score(stats.line, point.log_length));
  });
  const double spread = quantile(residuals, 0.75) - quantile(residuals, 0.25);
  const double scale = spread / EV_QUARTILES;
  stats.line.intercept += scale * (EV_MEAN - EV_MEDIAN);
  stats.line.variance = scale * scale * EV_SD * EV_SD;
}

void mark_related(const Points& points, ZStats& stats) {
  const double sd = std::sqrt(stats.line.variance);
  each_point(points, [&](const Point& point) {
    const double residual = point.score - mean_score(stats.line, point.log_length);
    const bool related = sd > 0 && stats.n * tail_probability(residual / sd) < RELATED_BELOW;
    stats.related[static_cast<std::size_t>(point.seqno)] = related ? 1 : 0;
  });
}

void fit_means(const Points& points, ZStats& stats) {
  const auto takes_part = [&](const Point& point) {
    return stats.related[static_cast<std::size_t>(point.seqno)] == 0;
  };
  for (LengthBin& bin : stats.bins) {
    bin.fitted = 0;
    bin.log_length = bin.score = 0;
  }
  each_point(points, [&](const Point& point) {
    if (!takes_part(point)) return;
    LengthBin& bin = stats.bins[point.bin];
    ++bin.fitted;
    bin.log_length += point.log_length;
    bin.score += point.score;
  });
  for (LengthBin& bin : stats.bins) {
    if (bin.fitted == 0) continue;
    bin.log_length /= bin.fitted;
    bin.score /= bin.fitted;
  }
  fit_line(stats.bins, stats.line);
  double squares = 0, count = 0;
  each_point(points, [&](const Point& point) {
    if (!takes_part(point)) return;
    const double residual = point.score - mean_score(stats.line, point.log_length);
    squares += residual * residual;
    ++count;
  });
  stats.line.variance = squares / std::max(count, 1.0);
}

}  // namespace

ZStats do_stats(const int32_t* scores, const SeqRec* seqs, int32_t n, const Params* p) {
  ZStats stats;
  stats.n = n;
  stats.related.assign(static_cast<std::size_t>(n), 0);
  const Points points = collect_points(scores, seqs, n, stats.bins, p);
  if (points.count == 0) return stats;
  fit_medians(points, stats);
  for (int32_t refit = 0; refit < REFITS; ++refit) {
    mark_related(points, stats);
    fit_means(points, stats);
  }
  return stats;
}

UTvector<int32_t> get_zscores(const ZStats& stats, const int32_t* scores, const SeqRec* seqs, int32_t n,
                              const Params* p) {
  UTvector<int32_t> zscores(static_cast<std::size_t>(n), 0);
  const double precision = p->PRECISION;
  const double sd = std::sqrt(stats.line.variance);
  for (int32_t k = 0; k < n; ++k) {
    if (!has_score(scores[k], seqs[k])) continue;
    const double residual = scores[k] / precision - mean_score(stats.line, log_length(seqs[k]));
    const double deviations = sd > 0 ? residual / sd : 0;
    zscores[static_cast<std::size_t>(k)] = UTtruncate(std::round((Z_MEAN + Z_SD * deviations) * precision));
  }
  return zscores;
}

UTvector<double> get_p(const int32_t* zscores, int32_t n, const Params* p) {
  UTvector<double> values(static_cast<std::size_t>(n));
  std::transform(zscores, zscores + n, values.begin(), [p](int32_t z) {
    return tail_probability((z / static_cast<double>(p->PRECISION) - Z_MEAN) / Z_SD);
  });
  return values;
}

UTvector<double> get_e(const int32_t* zscores, int32_t n, const Params* p) {
  UTvector<double> values = get_p(zscores, n, p);
  for (double& value : values) value *= n;
  return values;
}

}  // namespace zelvan
