// Non-linear least squares after Levenberg and Marquardt; 1-based arrays as in allocators.h.
// Source Press, Teukolsky, Vetterling, Flannery: Numerical Recipes in C, 2nd edition, section 15.5
#pragma once

#include "stats/numerics/allocators.h"

namespace zelvan {

// A model: its value y at abscissa x under the parameters a[1..ma], and the derivatives dyda[1..ma].
using FitModel = void (*)(double x, const double* a, double* y, double* dyda, int ma);

// mrqcof - curvature matrix, gradient and chi-square of a model at given parameters.
// In     x[1..ndata], y[1..ndata], sig[1..ndata] the standard deviations of y; a[1..ma]; ia[j] != 0:
//        parameter j is fitted
// Out    alpha[1..mfit][1..mfit], beta[1..mfit] over the fitted parameters in their order; *chisq
// Returns NUMERICS_OK, or NO_DVECTOR (the results are then unset)
int mrqcof(const double* x, const double* y, const double* sig, int ndata, const double* a, const int* ia,
           int ma, double** alpha, double* beta, double* chisq, FitModel model);

// mrqmin - one step of a fit.
// Does   with *alamda < 0 allocates the work space, sets *alamda to 0.001, evaluates the start and takes the
//        first step; with *alamda > 0 tries a step: *alamda falls to a tenth and the parameters move when
//        chi-square fell, else *alamda grows tenfold and they stay; with *alamda = 0 stores the covariance
//        (zeros for held parameters) and releases the work space
// In/Out a[1..ma]; *chisq the smallest chi-square so far; covar, alpha[1..ma][1..ma] work space of the fit,
//        covar the covariance after the last call
// Returns NUMERICS_OK, NO_DVECTOR, NO_ROWS or NO_ELEMENTS, or a code of gaussj. After a failure the work
//        space is released and the fit is over
// State  the published arguments have no place for the work vectors and the last chi-square: they live in
//        file scope between calls, so that one fit is under way at a time. A fit that was started and dropped
//        is released when the next one starts
int mrqmin(const double* x, const double* y, const double* sig, int ndata, double* a, const int* ia, int ma,
           double** covar, double** alpha, double* chisq, FitModel model, double* alamda);

// One fit by mrqmin, whose arguments these are, and how far it has come. The arrays belong to the caller.
struct MarquardtFit {
  FitModel model = nullptr;
  const double* x = nullptr;
  const double* y = nullptr;
  const double* sig = nullptr;
  int ndata = 0;
  double* a = nullptr;
  const int* ia = nullptr;
  int ma = 0;
  double** covar = nullptr;
  double** alpha = nullptr;
  double chisq = 0.0;
  double alamda = -1.0;
  int steps = 0;        // after the first one
  int quiet_steps = 0;  // the latest ones in a row that lowered chi-square by less than the tolerance
  bool converged = false;
};

struct StoppingRule {
  double tolerance = 0.0;  // of chi-square
  int quiet_steps = 0;     // as many in a row: the fit has converged
  int max_steps = 0;
};

// take_step - mrqmin on the record.
inline int take_step(MarquardtFit& fit) {
  return mrqmin(fit.x, fit.y, fit.sig, fit.ndata, fit.a, fit.ia, fit.ma, fit.covar, fit.alpha, &fit.chisq,
                fit.model, &fit.alamda);
}

// fit_until_quiet - a whole fit: steps until the rule is met or the steps are used up, then the covariance.
// In     before_step() is called before every step but the first; it may change fit.a and quiet_steps
// Out    fit.a, chisq, covar, converged
// Returns NUMERICS_OK, also for a fit that did not converge, or the code of mrqmin that ended it
template <class BeforeStep>
int fit_until_quiet(MarquardtFit& fit, const StoppingRule& rule, BeforeStep before_step) {
  int status = take_step(fit);
  while (status == NUMERICS_OK && fit.quiet_steps < rule.quiet_steps && fit.steps < rule.max_steps) {
    ++fit.steps;
    before_step();
    const double before = fit.chisq;
    status = take_step(fit);
    const bool quiet = fit.chisq <= before && before - fit.chisq < rule.tolerance;
    fit.quiet_steps = quiet ? fit.quiet_steps + 1 : 0;
  }
  if (status != NUMERICS_OK) return status;
  fit.converged = fit.quiet_steps >= rule.quiet_steps;
  fit.alamda = 0.0;
  return take_step(fit);
}

}  // namespace zelvan
