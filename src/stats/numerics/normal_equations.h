// The equations of a least-squares fit, over the fitted parameters only; 1-based arrays as in allocators.h.
#pragma once

namespace zelvan {

// count_fitted - how many of ia[1..ma] are not zero.
int count_fitted(const int* ia, int ma);

// Normal equations alpha x = beta of a fit: clear_equations, add_point for every point, complete_equations.
// In     mfit = count_fitted(ia, ma); derivatives[1..ma] of the model at the point; misfit: observed - model;
//        weight: 1 / variance of the observation
// Out    alpha[1..mfit][1..mfit], beta[1..mfit] in the order of the fitted parameters; only half of alpha is
//        filled before complete_equations
void clear_equations(double** alpha, double* beta, int mfit);
void add_point(const double* derivatives, double misfit, double weight, const int* ia, int ma, double** alpha,
               double* beta);
void complete_equations(double** alpha, int mfit);

}  // namespace zelvan
