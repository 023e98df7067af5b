#include "stats/numerics/linear_fit.h"

#include "stats/numerics/allocators.h"
#include "stats/numerics/linear_system.h"
#include "stats/numerics/normal_equations.h"

namespace zelvan {
namespace {

// What the held coefficients leave of y at the point whose basis functions are in afunc.
double left_to_fit(double y, const double* a, const int* ia, int ma, const double* afunc) {
  for (int j = 1; j <= ma; ++j) {
    if (ia[j] == 0) y -= a[j] * afunc[j];
  }
  return y;
}

double chi_square(const double* x, const double* y, const double* sig, int ndat, const double* a, int ma,
                  double* afunc, FitBasis basis) {
  double chisq = 0.0;
  for (int i = 1; i <= ndat; ++i) {
    basis(x[i], afunc, ma);
    double misfit = y[i];
    for (int j = 1; j <= ma; ++j) misfit -= a[j] * afunc[j];
    chisq += (misfit / sig[i]) * (misfit / sig[i]);
  }
  return chisq;
}

}  // namespace

int lfit(const double* x, const double* y, const double* sig, int ndat, double* a, const int* ia, int ma,
         double** covar, double* chisq, FitBasis basis) {
  const int mfit = count_fitted(ia, ma);
  double* afunc = nullptr;
  double* beta = nullptr;
  double** solution = nullptr;
  int status = vector(1, ma, &afunc);
  if (status == NUMERICS_OK) status = dvector(1, mfit, &beta);
  if (status == NUMERICS_OK) status = dmatrix(1, mfit, 1, 1, &solution);
  if (status == NUMERICS_OK) {
    clear_equations(covar, beta, mfit);
    for (int i = 1; i <= ndat; ++i) {
      basis(x[i], afunc, ma);
      const double misfit = left_to_fit(y[i], a, ia, ma, afunc);
      add_point(afunc, misfit, 1.0 / (sig[i] * sig[i]), ia, ma, covar, beta);
    }
    complete_equations(covar, mfit);
    for (int j = 1; j <= mfit; ++j) solution[j][1] = beta[j];
    status = gaussj(covar, mfit, solution, 1);
  }
  if (status == NUMERICS_OK) {
    int j = 0;
    for (int l = 1; l <= ma; ++l) {
      if (ia[l] != 0) a[l] = solution[++j][1];
    }
    *chisq = chi_square(x, y, sig, ndat, a, ma, afunc, basis);
    covsrt(covar, ma, ia, mfit);
  }
  free_dmatrix(solution, 1, mfit, 1, 1);
  free_dvector(beta, 1, mfit);
  free_vector(afunc, 1, ma);
  return status;
}

}  // namespace zelvan
