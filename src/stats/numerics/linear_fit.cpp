#include "stats/numerics/linear_fit.h"

#include "stats/numerics/allocators.h"
#include "stats/numerics/linear_system.h"

namespace {

// Builds the normal equations of the fitted coefficients: covar[1..mfit][1..mfit], beta[1..mfit][1].
void normal_equations(const double* x, const double* y, const double* sig, int ndat, const double* a,
                      const int* ia, int ma, double** covar, double** beta, double* afunc, FitBasis basis) {
  int mfit = 0;
  for (int j = 1; j <= ma; ++j) mfit += ia[j] != 0;
  for (int j = 1; j <= mfit; ++j) {
    for (int k = 1; k <= mfit; ++k) covar[j][k] = 0.0;
    beta[j][1] = 0.0;
  }
  for (int i = 1; i <= ndat; ++i) {
    basis(x[i], afunc, ma);
    double ym = y[i];
    for (int j = 1; j <= ma; ++j) {
      if (ia[j] == 0) ym -= a[j] * afunc[j];
    }
    const double weight = 1.0 / (sig[i] * sig[i]);
    int j = 0;
    for (int l = 1; l <= ma; ++l) {
      if (ia[l] == 0) continue;
      ++j;
      int k = 0;
      for (int m = 1; m <= l; ++m) {
        if (ia[m] != 0) covar[j][++k] += afunc[l] * weight * afunc[m];
      }
      beta[j][1] += ym * afunc[l] * weight;
    }
  }
  for (int j = 2; j <= mfit; ++j) {
    for (int k = 1; k < j; ++k) covar[k][j] = covar[j][k];
  }
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
  double* afunc = nullptr;
  double** beta = nullptr;
  int mfit = 0;
  for (int j = 1; j <= ma; ++j) mfit += ia[j] != 0;
  int status = vector(1, ma, &afunc);
  if (status == NUMERICS_OK) status = dmatrix(1, ma, 1, 1, &beta);
  if (status == NUMERICS_OK) {
    normal_equations(x, y, sig, ndat, a, ia, ma, covar, beta, afunc, basis);
    status = gaussj(covar, mfit, beta, 1);
  }
  if (status == NUMERICS_OK) {
    int j = 0;
    for (int l = 1; l <= ma; ++l) {
      if (ia[l] != 0) a[l] = beta[++j][1];
    }
    *chisq = chi_square(x, y, sig, ndat, a, ma, afunc, basis);
    covsrt(covar, ma, ia, mfit);
  }
  free_dmatrix(beta, 1, ma, 1, 1);
  free_vector(afunc, 1, ma);
  return status;
}
