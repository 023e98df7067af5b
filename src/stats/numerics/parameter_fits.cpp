#include "stats/numerics/parameter_fits.h"

#include <cmath>

#include "stats/numerics/allocators.h"
#include "stats/numerics/levenberg_marquardt.h"
#include "stats/numerics/linear_fit.h"
#include "stats/numerics/models.h"

namespace zelvan {
namespace {

constexpr int STEP_LIMIT = 10000;
constexpr int QUIET_STEPS = 8;
constexpr double QUIET_FALL = 0.001;

// Work space of one fit, 1-based.
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

void trace_step(FILE* stream, int step, double chisq, double alamda, int itst, const double* a) {
  std::fprintf(stream, "\n%s %2d %17s %10.4f %10s %9.2e itst: %d\n", "Iteration #", step,
               "chi-squared:", chisq, "alamda:", alamda, itst);
  std::fprintf(stream, "%8s %8s %8s\n", "param[1]", "param[2]", "param[3]");
  for (int j = 1; j <= 3; ++j) std::fprintf(stream, "%9.4f", a[j]);
  std::fputs("\n", stream);
}

void trace_result(FILE* stream, const FitWork& work, const double* a, double chisq) {
  std::fputs("\nUncertainties:\n", stream);
  for (int j = 1; j <= 3; ++j) std::fprintf(stream, "%9.4f", std::sqrt(work.covar[j][j]));
  std::fputs("\nFINAL A   ", stream);
  for (int j = 1; j <= 3; ++j) std::fprintf(stream, "%9.4f             ", a[j]);
  std::fprintf(stream, "%f\n", chisq);
}

int fit_exponential(FitWork& work, const double* y, double* a, int trace, FILE* stream) {
  double chisq = 0.0;
  double alamda = -1.0;
  const auto step = [&] {
    return mrqmin(work.x, y, work.sig, work.n, a, work.ia, work.ma, work.covar, work.alpha, &chisq, fexp1,
                  &alamda);
  };
  int status = step();
  int itst = 0;
  int nsteps = 0;
  while (status == NUMERICS_OK && itst < QUIET_STEPS && nsteps < STEP_LIMIT) {
    ++nsteps;
    if (trace == 1) trace_step(stream, nsteps, chisq, alamda, itst, a);
    const double before = chisq;
    status = step();
    itst = chisq <= before && before - chisq < QUIET_FALL ? itst + 1 : 0;
  }
  if (status != NUMERICS_OK) return status;
  alamda = 0.0;
  status = step();
  if (status != NUMERICS_OK) return status;
  if (trace == 1) trace_result(stream, work, a, chisq);
  const bool finite =
      std::isfinite(chisq) && std::isfinite(a[1]) && std::isfinite(a[2]) && std::isfinite(a[3]);
  return itst == QUIET_STEPS && finite ? NUMERICS_OK : NOT_SETTLED;
}

int fit_line(FitWork& work, const double* y, double* a, int trace, FILE* stream) {
  a[1] = 0.0;
  work.ia[1] = 0;
  double chisq = 0.0;
  const int status = lfit(work.x, y, work.sig, work.n, a, work.ia, work.ma, work.covar, &chisq, funcs);
  if (status != NUMERICS_OK || trace != 1) return status;
  std::fprintf(stream, "\nParameter B fitting:\n\n%11s %21s\n", "parameter", "uncertainty");
  for (int j = 1; j <= 2; ++j) {
    std::fprintf(stream, "  linparam[%1d] = %8.6f %12.6f\n", j, a[j], std::sqrt(work.covar[j][j]));
  }
  std::fprintf(stream, "chi-squared = %12f\nfull covariance matrix\n", chisq);
  for (int j = 1; j <= 2; ++j) {
    std::fprintf(stream, "%12f%12f\n", work.covar[j][1], work.covar[j][2]);
  }
  return status;
}

}  // namespace

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
