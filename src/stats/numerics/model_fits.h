// The models of the statistics and their two fits against lpl; 1-based arrays as in allocators.h.
#pragma once

#include <cstdio>

namespace zelvan {

// The models have the form of a FitModel. Exponents are limited, so that a trial far from the data shows a
// large, finite chi-square and the fit steps back; only a zero scale (a2 of the density, a3 of the
// exponential) gives NaN.

// fextrem_val2pt - extreme-value (Gumbel) density, a1 the location, a2 the scale; ma = 2.
// y = 1/a2 x exp(-z) x exp(-exp(-z)) with z = (x - a1) / a2
void fextrem_val2pt(double x, const double* a, double* y, double* dyda, int ma);

// fexp1 - y = a1 + a2 x exp(-x / a3); ma = 3. The derivative by a3 takes e as 2.718281828.
void fexp1(double x, const double* a, double* y, double* dyda, int ma);

// funcs - the basis 1, x, x^2, ... of which the line fits use the first two; has the form of a FitBasis.
void funcs(double x, double* afunc, int ma);

// The fits take points x[1..n], y[1..n], x in tenths of lpl (divided by 10 here), and the coefficients
// a[1..3] and a[1..2]. Both return 0 or the status of the first failing call, which is also stored in *error
// (unchanged on success). With trace 1 the course of the fit is written to `stream`, which may be null
// otherwise.

// expfitPARAMA - fits a1 + a2 x exp(-lpl / a3), every point of weight 1, from the given coefficients.
// Does   steps of mrqmin until eight in a row lowered chi-square by less than 0.001
// Returns NUMERICS_OK, NO_IVECTOR, a code of mrqmin, or NOT_CONVERGED (after 10,000 steps, or to a result
//        that is not finite); a is the latest attempt then
int expfitPARAMA(const double* x, const double* y, int n, double* a, int* error, int trace, FILE* stream);

// linfitPARAMB2 - fits a2 x lpl, every standard deviation 0.001; a1 is set to 0 and held.
// Returns NUMERICS_OK, NO_IVECTOR or a code of lfit
int linfitPARAMB2(const double* x, const double* y, int n, double* a, int* error, int trace, FILE* stream);

}  // namespace zelvan
