#include "stats/numerics/linear_least_squares.h"

#include <cmath>
#include <utility>

#include "stats/numerics/allocators.h"

namespace zelvan {
namespace {

// Work vectors of one elimination, 1-based.
struct Pivots {
  int* row = nullptr;   // [step] row the pivot came from
  int* col = nullptr;   // [step] its column
  int* used = nullptr;  // [column] 1: has been a pivot column
};

int allocate_pivots(Pivots& pivots, int n) {
  const bool room = ivector(1, n, &pivots.row) == NUMERICS_OK && ivector(1, n, &pivots.col) == NUMERICS_OK &&
                    ivector(1, n, &pivots.used) == NUMERICS_OK;
  return room ? NUMERICS_OK : NO_VECTOR;
}

void free_pivots(Pivots& pivots, int n) {
  free_ivector(pivots.used, 1, n);
  free_ivector(pivots.col, 1, n);
  free_ivector(pivots.row, 1, n);
}

// Finds the largest element outside the rows and columns already done; false when there is none but zeros.
bool find_pivot(double** a, int n, const int* used, int& row, int& col) {
  double largest = 0.0;
  for (int i = 1; i <= n; ++i) {
    if (used[i] == 1) continue;
    for (int j = 1; j <= n; ++j) {
      if (used[j] == 0 && std::fabs(a[i][j]) > largest) {
        largest = std::fabs(a[i][j]);
        row = i;
        col = j;
      }
    }
  }
  return largest > 0.0;
}

// Makes column `col` a unit column with its one in row `col`, building the inverse in the place it frees.
void eliminate(double** a, int n, double** b, int m, int col) {
  const double scale = 1.0 / a[col][col];
  a[col][col] = 1.0;
  for (int j = 1; j <= n; ++j) a[col][j] *= scale;
  for (int j = 1; j <= m; ++j) b[col][j] *= scale;
  for (int i = 1; i <= n; ++i) {
    if (i == col) continue;
    const double factor = a[i][col];
    a[i][col] = 0.0;
    for (int j = 1; j <= n; ++j) a[i][j] -= a[col][j] * factor;
    for (int j = 1; j <= m; ++j) b[i][j] -= b[col][j] * factor;
  }
}

int solve(double** a, int n, double** b, int m, const Pivots& pivots) {
  for (int j = 1; j <= n; ++j) pivots.used[j] = 0;
  for (int step = 1; step <= n; ++step) {
    int row = 0, col = 0;
    if (!find_pivot(a, n, pivots.used, row, col)) return SINGULAR;
    pivots.used[col] = 1;
    pivots.row[step] = row;
    pivots.col[step] = col;
    if (row != col) {
      for (int j = 1; j <= n; ++j) std::swap(a[row][j], a[col][j]);
      for (int j = 1; j <= m; ++j) std::swap(b[row][j], b[col][j]);
    }
    eliminate(a, n, b, m, col);
  }
  // The exchanges of rows were exchanges of columns of the inverse: undo them, the last one first.
  for (int step = n; step >= 1; --step) {
    if (pivots.row[step] == pivots.col[step]) continue;
    for (int i = 1; i <= n; ++i) std::swap(a[i][pivots.row[step]], a[i][pivots.col[step]]);
  }
  return NUMERICS_OK;
}

// What the held coefficients leave to fit at the point whose basis functions are in afunc.
double subtract_held(double y, const double* a, const int* ia, int ma, const double* afunc) {
  for (int j = 1; j <= ma; ++j) {
    if (ia[j] == 0) y -= a[j] * afunc[j];
  }
  return y;
}

double chi_square(const double* x, const double* y, const double* sig, int ndat, const double* a, int ma,
                  double* afunc, FitBasis basis) {
  double chisq = 0.0;
  for (int i = 1; i <= ndat; ++i) {
    basis(x[i], afunc, ma);
    double residual = y[i];
    for (int j = 1; j <= ma; ++j) residual -= a[j] * afunc[j];
    chisq += (residual / sig[i]) * (residual / sig[i]);
  }
  return chisq;
}

}  // namespace

int gaussj(double** a, int n, double** b, int m) {
  Pivots pivots;
  int status = allocate_pivots(pivots, n);
  if (status == NUMERICS_OK) status = solve(a, n, b, m, pivots);
  free_pivots(pivots, n);
  return status;
}

void covsrt(double** covar, int ma, const int* ia, int mfit) {
  for (int i = mfit + 1; i <= ma; ++i) {
    for (int j = 1; j <= i; ++j) covar[i][j] = covar[j][i] = 0.0;
  }
  // From the last parameter down, so that each packed row and column moves to a place already given up.
  int packed = mfit;
  for (int full = ma; full >= 1; --full) {
    if (ia[full] == 0) continue;
    for (int i = 1; i <= ma; ++i) std::swap(covar[i][packed], covar[i][full]);
    for (int j = 1; j <= ma; ++j) std::swap(covar[packed][j], covar[full][j]);
    --packed;
  }
}

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

void add_point(const double* derivatives, double residual, double weight, const int* ia, int ma,
               double** alpha, double* beta) {
  int j = 0;
  for (int l = 1; l <= ma; ++l) {
    if (ia[l] == 0) continue;
    ++j;
    int k = 0;
    for (int m = 1; m <= l; ++m) {
      if (ia[m] != 0) alpha[j][++k] += derivatives[l] * weight * derivatives[m];
    }
    beta[j] += residual * derivatives[l] * weight;
  }
}

void complete_equations(double** alpha, int mfit) {
  for (int j = 2; j <= mfit; ++j) {
    for (int k = 1; k < j; ++k) alpha[k][j] = alpha[j][k];
  }
}

int lfit(const double* x, const double* y, const double* sig, int ndat, double* a, const int* ia, int ma,
         double** covar, double* chisq, FitBasis basis) {
  const int mfit = count_fitted(ia, ma);
  double* afunc = nullptr;
  double* beta = nullptr;
  double** solution = nullptr;
  int status = vector(1, ma, &afunc);
  if (status == NUMERICS_OK) status = dvector(1, mfit, &beta);
  if (status == NUMERICS_OK) status = dmatrix(1, mfit, 1, 1, &solution);
  if (status == NUMERICS_OK) {
    clear_equations(covar, beta, mfit);
    for (int i = 1; i <= ndat; ++i) {
      basis(x[i], afunc, ma);
      const double residual = subtract_held(y[i], a, ia, ma, afunc);
      add_point(afunc, residual, 1.0 / (sig[i] * sig[i]), ia, ma, covar, beta);
    }
    complete_equations(covar, mfit);
    for (int j = 1; j <= mfit; ++j) solution[j][1] = beta[j];
    status = gaussj(covar, mfit, solution, 1);
  }
  if (status == NUMERICS_OK) {
    int j = 0;
    for (int l = 1; l <= ma; ++l) {
      if (ia[l] != 0) a[l] = solution[++j][1];
    }
    *chisq = chi_square(x, y, sig, ndat, a, ma, afunc, basis);
    covsrt(covar, ma, ia, mfit);
  }
  free_dmatrix(solution, 1, mfit, 1, 1);
  free_dvector(beta, 1, mfit);
  free_vector(afunc, 1, ma);
  return status;
}

}  // namespace zelvan
