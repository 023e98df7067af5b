#include "stats/range_fit.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "stats/numerics/allocators.h"
#include "stats/numerics/levenberg_marquardt.h"
#include "stats/numerics/model_fits.h"

namespace zelvan {
namespace {

constexpr StoppingRule RANGE_FIT_STOPS = {.tolerance = 0.1, .quiet_steps = 10, .max_steps = 1000};

// Location and scale of the extreme-value distribution that has this mean and standard deviation.
RangeFit from_moments(double mean, double sd) {
  RangeFit start;
  start.beta = sd * std::sqrt(6.0) / std::numbers::pi;
  start.u = mean - std::numbers::egamma * start.beta;
  return start;
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
  const int ia[3] = {0, 1, 1};
  MarquardtFit marquardt = {.model = fextrem_val2pt,
                            .x = frequencies.score.data(),
                            .y = frequencies.density.data(),
                            .sig = frequencies.sigma.data(),
                            .ndata = frequencies.nbuckets,
                            .a = a,
                            .ia = ia,
                            .ma = 2};
  int status = dmatrix(1, 2, 1, 2, &marquardt.covar);
  if (status == NUMERICS_OK) status = dmatrix(1, 2, 1, 2, &marquardt.alpha);
  if (status == NUMERICS_OK) {
    status = fit_until_quiet(marquardt, RANGE_FIT_STOPS, [&] {
      if (a[2] < 0.0) {
        a[2] = -a[2];
        marquardt.quiet_steps = 0;
      }
    });
  }
  free_dmatrix(marquardt.alpha, 1, 2, 1, 2);
  free_dmatrix(marquardt.covar, 1, 2, 1, 2);
  fit = {.u = a[1], .beta = a[2], .chisq = marquardt.chisq};
  if (status != NUMERICS_OK) return status;
  const bool usable = std::isfinite(fit.u) && std::isfinite(fit.beta) && fit.beta > 0.0;
  return marquardt.converged && usable ? NUMERICS_OK : NOT_CONVERGED;
}

}  // namespace zelvan
