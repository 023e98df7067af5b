#include "stats/lpfit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "seq/database_info.h"
#include "stats/fit_trace.h"
#include "stats/numerics/allocators.h"
#include "stats/numerics/model_fits.h"
#include "stats/range_fit.h"
#include "stats/score_table.h"
#include "util/numbers.h"
#include "util/streams.h"

namespace zelvan {
namespace {

constexpr double NAN_VALUE = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t FEWEST_RANGES = 3;  // the limits of the scale need three at each end
constexpr int32_t WIDTH_AIMED_AT = 4;     // bins; see do_lpfit

// Points of the fits against lpl, one per range; 1-based, element 0 unused.
struct RangePoints {
  int32_t n = 0;
  UTvector<double> tenths{0.0};  // 10 x lpl
  UTvector<double> u{0.0};
  UTvector<double> beta{0.0};
};

void dump_input(const LpfitData& lpfit) {
  std::fprintf(std_out, "##START DUMP OF LPFIT INPUT\n##lpfit->n: %d\n##lpfit->minbuck: %d\n", lpfit.n,
               lpfit.minbuck);
  std::fprintf(std_out, "##lpfit->minrange: %d\n##lpfit->lplbucketwidth: %f\n", lpfit.minrange,
               static_cast<double>(lpfit.lplbucketwidth));
  for (std::size_t i = 0; i < lpfit.score.size(); ++i) {
    std::fprintf(std_out, "#!%d %d %f\n", lpfit.qlen[i], lpfit.dblen[i], static_cast<double>(lpfit.score[i]));
  }
  std::fputs("##END DUMP OF LPFIT INPUT\n", std_out);
}

float matrix_units(int32_t score, const Params* p) {
  return static_cast<float>(score) / static_cast<float>(p->PRECISION);
}

// The ranges of the width that serves best.
RangeChoice choose_ranges(const ScoreTable& table, int32_t minbuck, int32_t minrange, const FitTrace& trace) {
  const auto required = std::max(FEWEST_RANGES, static_cast<std::size_t>(std::max(minrange, 0)));
  RangeChoice best;
  for (int32_t width = 1; width <= MAX_RANGE_WIDTH; ++width) {
    if (width > WIDTH_AIMED_AT && best.ranges.size() >= required) break;
    RangeChoice tried = ranges_of_width(table, width, minbuck);
    trace_width(trace, tried);
    if (tried.ranges.size() >= std::min(best.ranges.size(), required)) best = std::move(tried);
  }
  return best;
}

int32_t fit_ranges(const ScoreTable& table, const RangeChoice& choice, const FitTrace& trace,
                   RangePoints& points) {
  for (const LplRange& range : choice.ranges) {
    RangeFit fit;
    const FrequencyTable frequencies = range_frequencies(table, range, fit);
    const int status = fit_range(frequencies, fit);
    if (status == NO_ROWS || status == NO_ELEMENTS || status == NO_DVECTOR) return FIT_NO_WORK_SPACE;
    if (status != NUMERICS_OK) return FIT_RANGE_FAILED;
    ++points.n;
    points.tenths.push_back(range.tenths);
    points.u.push_back(fit.u);
    points.beta.push_back(fit.beta);
    trace_range(trace, table, range, points.n, frequencies, fit);
  }
  return 0;
}

// From the three ranges nearest to either end, the nearest weighing most.
void limit_scale(const RangePoints& points, LpfitData& lpfit) {
  const double* beta = points.beta.data();
  const int32_t m = points.n;
  lpfit.Bmin = (3.0 * beta[1] + 2.0 * beta[2] + beta[3]) / 6.0;
  lpfit.Bmax = (3.0 * beta[m] + 2.0 * beta[m - 1] + beta[m - 2]) / 6.0;
}

// Runs one of the two fits on the coefficients of the record, which stay as they are when it fails.
int fit_coefficients(decltype(expfitPARAMA) fit_routine, const RangePoints& points, const UTvector<double>& y,
                     double* coefficients, int traced, FILE* trace) {
  double a[4] = {0.0, coefficients[0], coefficients[1], coefficients[2]};
  int error = NUMERICS_OK;
  fit_routine(points.tenths.data(), y.data(), points.n, a, &error, traced, trace);
  if (error == NUMERICS_OK) std::copy(a + 1, a + 4, coefficients);
  return error;
}

int32_t fit_location(const RangePoints& points, LpfitData& lpfit, FILE* trace) {
  const int exponential_status =
      fit_coefficients(expfitPARAMA, points, points.u, lpfit.paramA, lpfit.trace_processing, trace);
  lpfit.EXPORLIN = exponential_status == NUMERICS_OK ? 0 : 1;
  if (exponential_status == NUMERICS_OK) return 0;
  const int line_status =
      fit_coefficients(linfitPARAMB2, points, points.u, lpfit.paramA, lpfit.trace_processing, trace);
  return line_status == NUMERICS_OK ? 0 : line_status + 100 * exponential_status;
}

int32_t fit(LpfitData& lpfit, const FitTrace& trace) {
  if (lpfit.n < 1) return FIT_NO_HITS;
  const ScoreSummary summary = summarise_scores(lpfit.score.data(), lpfit.n);
  trace_summary(trace, summary, lpfit.n);
  if (score_buckets(summary) > MAX_SCORE_BUCKETS) return FIT_SCORES_TOO_WIDE;
  if (!UThaveroom(static_cast<std::size_t>(score_buckets(summary)) * LPL_BINS * sizeof(int32_t))) {
    return FIT_NO_TABLE;
  }
  const ScoreTable table =
      count_scores(lpfit.score.data(), lpfit.qlen.data(), lpfit.dblen.data(), lpfit.n, summary);
  const RangeChoice choice = choose_ranges(table, lpfit.minbuck, lpfit.minrange, trace);
  if (choice.ranges.size() < FEWEST_RANGES) return FIT_TOO_FEW_RANGES;
  trace_choice(trace, table, choice);

  RangePoints points;
  if (const int32_t code = fit_ranges(table, choice, trace, points); code != 0) return code;
  limit_scale(points, lpfit);
  FILE* stream = trace.processing.stream;
  if (const int32_t code = fit_location(points, lpfit, stream); code != 0) return code;
  if (fit_coefficients(linfitPARAMB2, points, points.beta, lpfit.paramB, lpfit.trace_processing, stream) !=
      NUMERICS_OK) {
    return FIT_SCALE_FAILED;
  }
  trace_result(trace, lpfit);
  return 0;
}

double location(double lpl, const LpfitData& lpfit) {
  const double* a = lpfit.paramA;
  return lpfit.EXPORLIN == 0 ? a[0] + a[1] * std::exp(-lpl / a[2]) : a[0] + a[1] * lpl;
}

double scale(double lpl, const LpfitData& lpfit) {
  const double* b = lpfit.paramB;
  return std::min(std::max(lpfit.Bmin, b[0] + b[1] * lpl), lpfit.Bmax);
}

// x of one score in matrix units.
double standardised(float score, int32_t qlen, int32_t dblen, const LpfitData& lpfit) {
  if (lpfit.EXPORLIN != 0 && lpfit.EXPORLIN != 1) return NAN_VALUE;
  const double lpl = log_length_product(qlen, dblen);
  if (std::isnan(lpl)) return -std::numeric_limits<double>::infinity();
  return (UTtruncate(static_cast<double>(score)) - location(lpl, lpfit)) / scale(lpl, lpfit);
}

double significance(double x, int32_t dblen, const Params* p) {
  const double probability = std::exp(-x);
  switch (p->PROB_TYPE) {
    case 0:
      return probability;
    case 1:
      return probability * p->DB_QUERY_RATIO;
    case 2:
      return probability * (static_cast<double>(p->binfo->nres) / dblen);
    case 3:
      return probability * p->binfo->nseq;
    default:
      return NAN_VALUE;
  }
}

}  // namespace

LpfitData setup_lpfit(int32_t query_length, const SeqRec* seqs, const int32_t* scores, int32_t n,
                      const Params* p) {
  LpfitData lpfit;
  lpfit.n = n;
  const auto count = static_cast<std::size_t>(n);
  lpfit.score.resize(count);
  lpfit.qlen.assign(count, query_length);
  lpfit.dblen.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    lpfit.score[i] = matrix_units(scores[i], p);
    lpfit.dblen[i] = residues(seqs[i]);
  }
  lpfit.minbuck = p->LPFIT_MINBUCK;
  lpfit.minrange = p->LPFIT_MINRANGE;
  lpfit.lplbucketwidth = static_cast<float>(p->LPFIT_LPLBUCKETWIDTH);
  const int32_t traced = p->LPFIT_PRINT == 1 ? 1 : 0;
  lpfit.trace_processing = lpfit.trace_hists = lpfit.trace_freqtab = lpfit.trace_stat = traced;
  if (p->VERBOSE != 0) {
    std::fprintf(std_err, "p->LPFIT_MINBUCK:%d\np->LPFIT_MINRANGE:%d\np->LPFIT_LPLBUCKETWIDTH:%g\n",
                 p->LPFIT_MINBUCK, p->LPFIT_MINRANGE, p->LPFIT_LPLBUCKETWIDTH);
  }
  if (p->VERBOSE == 1000) dump_input(lpfit);
  return lpfit;
}

int32_t do_lpfit(LpfitData& lpfit) {
  FitTrace trace = open_fit_trace(lpfit);
  lpfit.error = fit(lpfit, trace);
  close_fit_trace(trace);
  return lpfit.error;
}

UTvector<double> apply_lpfit(const LpfitData& lpfit) {
  UTvector<double> x(static_cast<std::size_t>(lpfit.n));
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] = standardised(lpfit.score[i], lpfit.qlen[i], lpfit.dblen[i], lpfit);
  }
  return x;
}

UTvector<double> get_lpfit_probs(const UTvector<double>& x, const SeqRec* seqs, int32_t n, const Params* p) {
  UTvector<double> result(static_cast<std::size_t>(n));
  for (std::size_t i = 0; i < result.size(); ++i) result[i] = significance(x[i], residues(seqs[i]), p);
  return result;
}

double apply_single_lpfit(int32_t score, int32_t qlen, int32_t dblen, const LpfitData& lpfit,
                          const Params* p) {
  return standardised(matrix_units(score, p), qlen, dblen, lpfit);
}

double get_single_lpfit_prob(int32_t score, int32_t qlen, int32_t dblen, const LpfitData& lpfit,
                             const Params* p) {
  return significance(apply_single_lpfit(score, qlen, dblen, lpfit, p), dblen, p);
}

UTvector<double> dud_lpfit(double value, int32_t n) {
  return UTvector<double>(static_cast<std::size_t>(n), value);
}

void release_hits(LpfitData& lpfit) {
  lpfit.score = UTvector<float>();
  lpfit.qlen = UTvector<int32_t>();
  lpfit.dblen = UTvector<int32_t>();
}

void freeup_lpfit(LpfitData& lpfit) {
  lpfit = LpfitData();
}

}  // namespace zelvan
