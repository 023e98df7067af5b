// General linear least squares; 1-based arrays as in allocators.h.
#pragma once

#include "stats/numerics/models.h"

namespace zelvan {

// lfit - fits the coefficients of basis functions by the normal equations.
// In     x[1..ndat], y[1..ndat], sig[1..ndat] the standard deviations of y; ia[j] != 0: coefficient j is fitted,
//        else a[j] is held
// Out    a[1..ma]; covar[1..ma][1..ma], zeros for held coefficients; *chisq
// Returns NUMERICS_OK, NO_VECTOR, NO_DVECTOR, NO_ROWS or NO_ELEMENTS, or a code of gaussj (a is then unchanged)
// Source Press, Teukolsky, Vetterling, Flannery: Numerical Recipes in C, 2nd edition, section 15.4
int lfit(const double* x, const double* y, const double* sig, int ndat, double* a, const int* ia, int ma,
         double** covar, double* chisq, FitBasis basis);

}  // namespace zelvan
