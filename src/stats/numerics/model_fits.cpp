#include "stats/numerics/model_fits.h"

#include <algorithm>
#include <cmath>

#include "stats/numerics/allocators.h"
#include "stats/numerics/levenberg_marquardt.h"
#include "stats/numerics/linear_least_squares.h"

namespace zelvan {
namespace {

constexpr StoppingRule EXPONENTIAL_FIT_STOPS = {.tolerance = 0.001, .quiet_steps = 8, .max_steps = 10000};

// Exponents beyond this would overflow, in the exponential or in its square.
constexpr double EXPONENT_LIMIT = 300.0;

double clamped(double exponent) {
  return std::clamp(exponent, -EXPONENT_LIMIT, EXPONENT_LIMIT);
}

// Work space of one fit against lpl, 1-based.
struct FitWork {
  int n = 0;
  int ma = 0;
  int* ia = nullptr;
  double* x = nullptr;
  double* sig = nullptr;
  double** covar = nullptr;
  double** alpha = nullptr;
};

// Allocates for n points and ma parameters; abscissas are divided by 10, every parameter is fitted.
int allocate_work(FitWork& work, const double* x, int n, int ma, double sigma) {
  work.n = n;
  work.ma = ma;
  int status = ivector(1, ma, &work.ia);
  if (status == NUMERICS_OK) status = dvector(1, n, &work.x);
  if (status == NUMERICS_OK) status = dvector(1, n, &work.sig);
  if (status == NUMERICS_OK) status = dmatrix(1, ma, 1, ma, &work.covar);
  if (status == NUMERICS_OK) status = dmatrix(1, ma, 1, ma, &work.alpha);
  if (status != NUMERICS_OK) return status;
  for (int i = 1; i <= n; ++i) {
    work.x[i] = x[i] / 10.0;
    work.sig[i] = sigma;
  }
  for (int j = 1; j <= ma; ++j) work.ia[j] = 1;
  return NUMERICS_OK;
}

void free_work(FitWork& work) {
  free_dmatrix(work.alpha, 1, work.ma, 1, work.ma);
  free_dmatrix(work.covar, 1, work.ma, 1, work.ma);
  free_dvector(work.sig, 1, work.n);
  free_dvector(work.x, 1, work.n);
  free_ivector(work.ia, 1, work.ma);
}

void trace_step(FILE* stream, const MarquardtFit& fit) {
  std::fprintf(stream, "\n%s %2d %17s %10.4f %10s %9.2e itst: %d\n", "Iteration #", fit.steps,
               "chi-squared:", fit.chisq, "alamda:", fit.alamda, fit.quiet_steps);
  std::fprintf(stream, "%8s %8s %8s\n", "param[1]", "param[2]", "param[3]");
  for (int j = 1; j <= 3; ++j) std::fprintf(stream, "%9.4f", fit.a[j]);
  std::fputs("\n", stream);
}

void trace_exponential(FILE* stream, const MarquardtFit& fit) {
  std::fputs("\nUncertainties:\n", stream);
  for (int j = 1; j <= 3; ++j) std::fprintf(stream, "%9.4f", std::sqrt(fit.covar[j][j]));
  std::fputs("\nFINAL A   ", stream);
  for (int j = 1; j <= 3; ++j) std::fprintf(stream, "%9.4f             ", fit.a[j]);
  std::fprintf(stream, "%f\n", fit.chisq);
}

void trace_line(FILE* stream, const FitWork& work, const double* a, double chisq) {
  std::fprintf(stream, "\nParameter B fitting:\n\n%11s %21s\n", "parameter", "uncertainty");
  for (int j = 1; j <= 2; ++j) {
    std::fprintf(stream, "  linparam[%1d] = %8.6f %12.6f\n", j, a[j], std::sqrt(work.covar[j][j]));
  }
  std::fprintf(stream, "chi-squared = %12f\nfull covariance matrix\n", chisq);
  for (int j = 1; j <= 2; ++j) {
    std::fprintf(stream, "%12f%12f\n", work.covar[j][1], work.covar[j][2]);
  }
}

int fit_exponential(const FitWork& work, const double* y, double* a, int trace, FILE* stream) {
  MarquardtFit fit = {.model = fexp1,
                      .x = work.x,
                      .y = y,
                      .sig = work.sig,
                      .ndata = work.n,
                      .a = a,
                      .ia = work.ia,
                      .ma = work.ma,
                      .covar = work.covar,
                      .alpha = work.alpha};
  const int status = fit_until_quiet(fit, EXPONENTIAL_FIT_STOPS, [&] {
    if (trace == 1) trace_step(stream, fit);
  });
  if (status != NUMERICS_OK) return status;
  if (trace == 1) trace_exponential(stream, fit);
  const bool finite =
      std::isfinite(fit.chisq) && std::isfinite(a[1]) && std::isfinite(a[2]) && std::isfinite(a[3]);
  return fit.converged && finite ? NUMERICS_OK : NOT_CONVERGED;
}

int fit_line(FitWork& work, const double* y, double* a, int trace, FILE* stream) {
  a[1] = 0.0;
  work.ia[1] = 0;
  double chisq = 0.0;
  const int status = lfit(work.x, y, work.sig, work.n, a, work.ia, work.ma, work.covar, &chisq, funcs);
  if (status == NUMERICS_OK && trace == 1) trace_line(stream, work, a, chisq);
  return status;
}

}  // namespace

void fextrem_val2pt(double x, const double* a, double* y, double* dyda, int) {
  const double z = clamped((x - a[1]) / a[2]);
  const double e = std::exp(-z);
  *y = std::exp(-z - e) / a[2];
  dyda[1] = *y * (1.0 - e) / a[2];
  dyda[2] = *y * (z * (1.0 - e) - 1.0) / a[2];
}

void fexp1(double x, const double* a, double* y, double* dyda, int) {
  const double e = std::exp(clamped(-x / a[3]));
  *y = a[1] + a[2] * e;
  dyda[1] = 1.0;
  dyda[2] = e;
  dyda[3] = x * a[2] / (a[3] * a[3] * std::pow(2.718281828, clamped(x / a[3])));
}

void funcs(double x, double* afunc, int ma) {
  double power = 1.0;
  for (int i = 1; i <= ma; ++i) {
    afunc[i] = power;
    power *= x;
  }
}

int expfitPARAMA(const double* x, const double* y, int n, double* a, int* error, int trace, FILE* stream) {
  FitWork work;
  int status = allocate_work(work, x, n, 3, 1.0);
  if (status == NUMERICS_OK) {
    if (trace == 1) {
      for (int i = 1; i <= n; ++i) std::fprintf(stream, "x[%d] = %f, y[%d] = %f\n", i, work.x[i], i, y[i]);
    }
    status = fit_exponential(work, y, a, trace, stream);
  }
  free_work(work);
  if (status != NUMERICS_OK) *error = status;
  return status;
}

int linfitPARAMB2(const double* x, const double* y, int n, double* a, int* error, int trace, FILE* stream) {
  FitWork work;
  int status = allocate_work(work, x, n, 2, 0.001);
  if (status == NUMERICS_OK) status = fit_line(work, y, a, trace, stream);
  free_work(work);
  if (status != NUMERICS_OK) *error = status;
  return status;
}

}  // namespace zelvan
