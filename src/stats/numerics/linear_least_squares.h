// Linear equations and general linear least squares; 1-based arrays as in allocators.h.
// Source Press, Teukolsky, Vetterling, Flannery: Numerical Recipes in C, 2nd edition, sections 2.1 and 15.4
#pragma once

namespace zelvan {

// gaussj - solves a set of linear equations for several right-hand sides at once.
// Does   Gauss-Jordan elimination with full pivoting, in place
// In     a[1..n][1..n] the matrix, b[1..n][1..m] one right-hand side per column
// Out    a is replaced by its inverse, b by the solutions; both are unset after a failure
// Returns NUMERICS_OK, NO_VECTOR (no work vectors) or SINGULAR (also where the matrix holds a NaN)
int gaussj(double** a, int n, double** b, int m);

// covsrt - spreads the covariance of the fitted parameters over all parameters; held ones get zeros.
// In     covar[1..mfit][1..mfit] of the fitted parameters in their order; ia[1..ma] non-zero: fitted
// Out    covar[1..ma][1..ma]
void covsrt(double** covar, int ma, const int* ia, int mfit);

// count_fitted - how many of ia[1..ma] are not zero.
int count_fitted(const int* ia, int ma);

// The normal equations alpha x = beta of a fit: clear_equations, add_point for every point,
// complete_equations.
// In     mfit = count_fitted(ia, ma); derivatives[1..ma] of the model at the point; residual: observed -
//        model; weight: 1 / variance of the observation
// Out    alpha[1..mfit][1..mfit], beta[1..mfit] in the order of the fitted parameters; alpha is filled up to
//        its diagonal only before complete_equations
void clear_equations(double** alpha, double* beta, int mfit);
void add_point(const double* derivatives, double residual, double weight, const int* ia, int ma,
               double** alpha, double* beta);
void complete_equations(double** alpha, int mfit);

// Basis functions at abscissa x: afunc[1..ma].
using FitBasis = void (*)(double x, double* afunc, int ma);

// lfit - fits the coefficients of basis functions by the normal equations.
// In     x[1..ndat], y[1..ndat], sig[1..ndat] the standard deviations of y; ia[j] != 0: coefficient j is
//        fitted, else a[j] is held
// Out    a[1..ma]; covar[1..ma][1..ma], zeros for held coefficients; *chisq
// Returns NUMERICS_OK, NO_VECTOR, NO_DVECTOR, NO_ROWS or NO_ELEMENTS, or a code of gaussj (a is then
//        unchanged)
int lfit(const double* x, const double* y, const double* sig, int ndat, double* a, const int* ia, int ma,
         double** covar, double* chisq, FitBasis basis);

}  // namespace zelvan
