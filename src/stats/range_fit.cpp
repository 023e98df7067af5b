#include "stats/range_fit.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "stats/numerics/allocators.h"
#include "stats/numerics/levenberg_marquardt.h"
#include "stats/numerics/models.h"

namespace zelvan {
namespace {

constexpr int STEP_LIMIT = 1000;
constexpr int QUIET_STEPS = 10;
constexpr double QUIET_FALL = 0.1;

// Location and scale of the extreme-value distribution that has this mean and standard deviation.
RangeFit from_moments(double mean, double sd) {
  RangeFit start;
  start.beta = sd * std::sqrt(6.0) / std::numbers::pi;
  start.u = mean - std::numbers::egamma * start.beta;
  return start;
}

int take_steps(const FrequencyTable& table, double* a, double** covar, double** alpha, double* chisq) {
  const int ia[3] = {0, 1, 1};
  double alamda = -1.0;
  const auto step = [&] {
    return mrqmin(table.score.data(), table.density.data(), table.sigma.data(), table.nbuckets, a, ia, 2,
                  covar, alpha, chisq, fextrem_val2pt, &alamda);
  };
  int status = step();
  double reference = *chisq;
  int quiet = 0;
  for (int k = 0; status == NUMERICS_OK && quiet < QUIET_STEPS && k < STEP_LIMIT; ++k) {
    if (a[2] < 0.0) {
      a[2] = -a[2];
      quiet = 0;
    }
    status = step();
    quiet = *chisq <= reference && reference - *chisq < QUIET_FALL ? quiet + 1 : 0;
    reference = *chisq;
  }
  if (status != NUMERICS_OK) return status;
  alamda = 0.0;
  status = step();
  return status == NUMERICS_OK && quiet < QUIET_STEPS ? NOT_SETTLED : status;
}

}  // namespace

FrequencyTable range_frequencies(const ScoreTable& table, const LplRange& range, RangeFit& out_start) {
  FrequencyTable result;
  result.nbuckets = table.nbuckets;
  const auto n = static_cast<std::size_t>(table.nbuckets);
  result.score.assign(n + 1, 0.0);
  result.density.assign(n + 1, 0.0);
  result.sigma.assign(n + 1, 0.0);
  for (int32_t bin = range.first; bin <= range.last; ++bin) {
    const int32_t* counts = table.counts.data() + static_cast<std::size_t>(bin) * n;
    for (std::size_t i = 1; i <= n; ++i) result.density[i] += counts[i - 1];
  }
  double mean = 0.0;
  double square = 0.0;
  for (std::size_t i = 1; i <= n; ++i) {
    result.score[i] = table.lowscore + static_cast<double>(i) - 0.5;
    result.density[i] /= range.count;
    mean += result.density[i] * result.score[i];
    square += result.density[i] * result.score[i] * result.score[i];
  }
  out_start = from_moments(mean, std::sqrt(std::max(square - mean * mean, 0.0)));

  const double a[3] = {0.0, out_start.u, out_start.beta};
  for (std::size_t i = 1; i <= n; ++i) {
    double expected = 0.0;
    double derivatives[3];
    fextrem_val2pt(result.score[i], a, &expected, derivatives, 2);
    result.sigma[i] = std::sqrt(std::max(expected * range.count, 1.0)) / range.count;
  }
  return result;
}

int fit_range(const FrequencyTable& frequencies, RangeFit& fit) {
  double a[3] = {0.0, fit.u, fit.beta};
  double** covar = nullptr;
  double** alpha = nullptr;
  int status = dmatrix(1, 2, 1, 2, &covar);
  if (status == NUMERICS_OK) status = dmatrix(1, 2, 1, 2, &alpha);
  if (status == NUMERICS_OK) status = take_steps(frequencies, a, covar, alpha, &fit.chisq);
  free_dmatrix(alpha, 1, 2, 1, 2);
  free_dmatrix(covar, 1, 2, 1, 2);
  fit.u = a[1];
  fit.beta = a[2];
  const bool usable = std::isfinite(fit.u) && std::isfinite(fit.beta) && fit.beta > 0.0;
  return status == NUMERICS_OK && !usable ? NOT_SETTLED : status;
}

}  // namespace zelvan
