// Linear equations and the covariance of a least-squares fit; 1-based arrays as in allocators.h.
#pragma once

namespace zelvan {

// gaussj - solves a set of linear equations for several right-hand sides at once.
// Does   Gauss-Jordan elimination with full pivoting, in place
// In     a[1..n][1..n] the matrix, b[1..n][1..m] one right-hand side per column
// Out    a is replaced by its inverse, b by the solutions; both are unset after a failure
// Returns NUMERICS_OK, NO_VECTOR (no work vectors) or SINGULAR (or the matrix holds what is not a number)
// Source Press, Teukolsky, Vetterling, Flannery: Numerical Recipes in C, 2nd edition, section 2.1
int gaussj(double** a, int n, double** b, int m);

// covsrt - spreads the covariance of the fitted parameters over all parameters; held ones get zeros.
// In     covar[1..mfit][1..mfit] of the fitted parameters in their order; ia[1..ma] non-zero: fitted
// Out    covar[1..ma][1..ma]
// Source the same, section 15.4
void covsrt(double** covar, int ma, const int* ia, int mfit);

}  // namespace zelvan
