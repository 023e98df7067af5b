// What the fits compare data with: two models with derivatives and the basis of straight lines. Exponents are
// limited, so that a trial far from the data shows a large, finite misfit and the fit steps back. Only a zero
// scale (a2 of the density, a3 of the exponential) gives what is not a number.
#pragma once

namespace zelvan {

// A model: its value y at abscissa x under the parameters a[1..ma], and dyda[1..ma].
using FitModel = void (*)(double x, const double* a, double* y, double* dyda, int ma);

// Basis functions at abscissa x: afunc[1..ma].
using FitBasis = void (*)(double x, double* afunc, int ma);

// fextrem_val2pt - extreme-value (Gumbel) density, a1 the location, a2 the scale; ma = 2.
// y = 1/a2 x exp(-z) x exp(-exp(-z)) with z = (x - a1) / a2
void fextrem_val2pt(double x, const double* a, double* y, double* dyda, int ma);

// fexp1 - y = a1 + a2 x exp(-x / a3); ma = 3. The derivative by a3 takes e as 2.718281828.
void fexp1(double x, const double* a, double* y, double* dyda, int ma);

// funcs - the basis 1, x, x^2, ... of which the line fits use the first two.
void funcs(double x, double* afunc, int ma);

}  // namespace zelvan
