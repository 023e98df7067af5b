// Non-linear least squares after Levenberg and Marquardt; 1-based arrays as in allocators.h.
// Source Press, Teukolsky, Vetterling, Flannery: Numerical Recipes in C, 2nd edition, section 15.5
#pragma once

#include "stats/numerics/models.h"

namespace zelvan {

// mrqcof - curvature matrix, gradient and chi-square of a model at given parameters.
// In     x[1..ndata], y[1..ndata], sig[1..ndata] the standard deviations of y; a[1..ma]; ia[j] != 0: parameter j
//        is fitted
// Out    alpha[1..mfit][1..mfit], beta[1..mfit] over the fitted parameters in their order; *chisq
// Returns NUMERICS_OK, or NO_DVECTOR (the results are then unset)
int mrqcof(const double* x, const double* y, const double* sig, int ndata, const double* a, const int* ia,
           int ma, double** alpha, double* beta, double* chisq, FitModel model);

// mrqmin - one step of a fit.
// Does   with *alamda < 0 allocates the work space, sets *alamda to 0.001, evaluates the start and takes the first
//        step; with *alamda > 0 tries a step: *alamda falls to a tenth and the parameters move when chi-square
//        fell, else *alamda grows tenfold and they stay; with *alamda = 0 stores the covariance (zeros for held
//        parameters) and releases the work space
// In/Out a[1..ma]; *chisq the smallest chi-square so far; covar, alpha[1..ma][1..ma] work space of the fit,
//        covar the covariance after the last call
// Returns NUMERICS_OK, NO_DVECTOR, NO_ROWS or NO_ELEMENTS, or a code of gaussj. After a failure the work space is
//        released and the fit is over
// State  the work space and the last chi-square live in file scope between calls: one fit at a time. A fit that
//        was started and dropped is released when the next one starts
int mrqmin(const double* x, const double* y, const double* sig, int ndata, double* a, const int* ia, int ma,
           double** covar, double** alpha, double* chisq, FitModel model, double* alamda);

}  // namespace zelvan
