#include "stats/numerics/levenberg_marquardt.h"

#include "stats/numerics/linear_least_squares.h"

namespace zelvan {
namespace {

// What mrqmin keeps from call to call, 1-based.
struct FitState {
  int ma = 0;                // parameters, bounds of the vectors
  int mfit = 0;              // of which are fitted
  double* atry = nullptr;    // parameters on trial
  double* beta = nullptr;    // gradient at the parameters kept
  double* da = nullptr;      // step; gradient of the trial
  double** oneda = nullptr;  // the step as the right-hand side of gaussj
  double chisq = 0.0;        // of the parameters kept
};

FitState state;

void free_state() {
  free_dmatrix(state.oneda, 1, state.mfit, 1, 1);
  free_dvector(state.da, 1, state.ma);
  free_dvector(state.beta, 1, state.ma);
  free_dvector(state.atry, 1, state.ma);
  state = FitState();
}

int allocate_state(const int* ia, int ma) {
  state.ma = ma;
  state.mfit = count_fitted(ia, ma);
  int status = dvector(1, ma, &state.atry);
  if (status == NUMERICS_OK) status = dvector(1, ma, &state.beta);
  if (status == NUMERICS_OK) status = dvector(1, ma, &state.da);
  if (status == NUMERICS_OK) status = dmatrix(1, state.mfit, 1, 1, &state.oneda);
  return status;
}

// Solves for the step; covar becomes the inverse of the damped curvature.
int solve_step(double** covar, double** alpha, double alamda) {
  for (int j = 1; j <= state.mfit; ++j) {
    for (int k = 1; k <= state.mfit; ++k) covar[j][k] = alpha[j][k];
    covar[j][j] = alpha[j][j] * (1.0 + alamda);
    state.oneda[j][1] = state.beta[j];
  }
  const int status = gaussj(covar, state.mfit, state.oneda, 1);
  for (int j = 1; j <= state.mfit; ++j) state.da[j] = state.oneda[j][1];
  return status;
}

// Takes over the trial, whose curvature is in covar and whose gradient is in da.
void keep_trial(double* a, double** covar, double** alpha, double chisq) {
  state.chisq = chisq;
  for (int j = 1; j <= state.mfit; ++j) {
    for (int k = 1; k <= state.mfit; ++k) alpha[j][k] = covar[j][k];
    state.beta[j] = state.da[j];
  }
  for (int l = 1; l <= state.ma; ++l) a[l] = state.atry[l];
}

int finish(const int* ia, double** covar) {
  covsrt(covar, state.ma, ia, state.mfit);
  free_state();
  return NUMERICS_OK;
}

}  // namespace

int mrqcof(const double* x, const double* y, const double* sig, int ndata, const double* a, const int* ia,
           int ma, double** alpha, double* beta, double* chisq, FitModel model) {
  double* dyda = nullptr;
  if (const int status = dvector(1, ma, &dyda); status != NUMERICS_OK) return status;
  const int mfit = count_fitted(ia, ma);
  clear_equations(alpha, beta, mfit);
  *chisq = 0.0;
  for (int i = 1; i <= ndata; ++i) {
    double ymod = 0.0;
    model(x[i], a, &ymod, dyda, ma);
    const double weight = 1.0 / (sig[i] * sig[i]);
    const double dy = y[i] - ymod;
    add_point(dyda, dy, weight, ia, ma, alpha, beta);
    *chisq += dy * dy * weight;
  }
  complete_equations(alpha, mfit);
  free_dvector(dyda, 1, ma);
  return NUMERICS_OK;
}

int mrqmin(const double* x, const double* y, const double* sig, int ndata, double* a, const int* ia, int ma,
           double** covar, double** alpha, double* chisq, FitModel model, double* alamda) {
  int status = NUMERICS_OK;
  if (*alamda < 0.0) {
    free_state();
    *alamda = 0.001;
    status = allocate_state(ia, ma);
    if (status == NUMERICS_OK) {
      status = mrqcof(x, y, sig, ndata, a, ia, ma, alpha, state.beta, chisq, model);
      state.chisq = *chisq;
    }
  }
  if (status == NUMERICS_OK) status = solve_step(covar, alpha, *alamda);
  if (status == NUMERICS_OK && *alamda == 0.0) return finish(ia, covar);

  if (status == NUMERICS_OK) {
    int j = 0;
    for (int l = 1; l <= ma; ++l) state.atry[l] = ia[l] != 0 ? a[l] + state.da[++j] : a[l];
    status = mrqcof(x, y, sig, ndata, state.atry, ia, ma, covar, state.da, chisq, model);
  }
  if (status != NUMERICS_OK) {
    free_state();
    return status;
  }
  if (*chisq < state.chisq) {
    *alamda *= 0.1;
    keep_trial(a, covar, alpha, *chisq);
  } else {
    *alamda *= 10.0;
    *chisq = state.chisq;
  }
  return NUMERICS_OK;
}

}  // namespace zelvan
