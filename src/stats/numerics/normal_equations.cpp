#include "stats/numerics/normal_equations.h"

namespace zelvan {

int count_fitted(const int* ia, int ma) {
  int mfit = 0;
  for (int j = 1; j <= ma; ++j) mfit += ia[j] != 0;
  return mfit;
}

void clear_equations(double** alpha, double* beta, int mfit) {
  for (int j = 1; j <= mfit; ++j) {
    for (int k = 1; k <= mfit; ++k) alpha[j][k] = 0.0;
    beta[j] = 0.0;
  }
}

void add_point(const double* derivatives, double misfit, double weight, const int* ia, int ma, double** alpha,
               double* beta) {
  int j = 0;
  for (int l = 1; l <= ma; ++l) {
    if (ia[l] == 0) continue;
    ++j;
    int k = 0;
    for (int m = 1; m <= l; ++m) {
      if (ia[m] != 0) alpha[j][++k] += derivatives[l] * weight * derivatives[m];
    }
    beta[j] += misfit * derivatives[l] * weight;
  }
}

void complete_equations(double** alpha, int mfit) {
  for (int j = 2; j <= mfit; ++j) {
    for (int k = 1; k < j; ++k) alpha[k][j] = alpha[j][k];
  }
}

}  // namespace zelvan
