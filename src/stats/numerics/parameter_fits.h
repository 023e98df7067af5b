// The two fits of range parameters against lpl. Abscissas come in tenths of lpl and are divided by 10 here.
// Points are x[1..n], y[1..n]; a[1..3] and a[1..2] are the coefficients. Both return 0 or the status of the first
// failing call, which is also stored in *error (left alone on success). With trace 1 the course of the fit is
// written to `stream`; it may be null otherwise.
#pragma once

#include <cstdio>

namespace zelvan {

// expfitPARAMA - fits a1 + a2 x exp(-lpl / a3), every point of weight 1, from the given coefficients.
// Does   steps of mrqmin until eight in a row lowered chi-square by less than 0.001
// Returns NUMERICS_OK, NO_IVECTOR, a code of mrqmin, or NOT_SETTLED (within 10,000 steps, or the result is not
//        finite); a is the latest attempt then
int expfitPARAMA(const double* x, const double* y, int n, double* a, int* error, int trace, FILE* stream);

// linfitPARAMB2 - fits a2 x lpl, every standard deviation 0.001; a1 is set to 0 and held.
// Returns NUMERICS_OK, NO_IVECTOR or a code of lfit
int linfitPARAMB2(const double* x, const double* y, int n, double* a, int* error, int trace, FILE* stream);

}  // namespace zelvan
