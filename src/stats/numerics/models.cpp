#include "stats/numerics/models.h"

#include <algorithm>
#include <cmath>

namespace zelvan {
namespace {

// Exponents beyond this would overflow, in the exponential or in its square.
constexpr double EXPONENT_LIMIT = 300.0;

double limited(double exponent) {
  return std::clamp(exponent, -EXPONENT_LIMIT, EXPONENT_LIMIT);
}

}  // namespace

void fextrem_val2pt(double x, const double* a, double* y, double* dyda, int) {
  const double z = limited((x - a[1]) / a[2]);
  const double e = std::exp(-z);
  *y = std::exp(-z - e) / a[2];
  dyda[1] = *y * (1.0 - e) / a[2];
  dyda[2] = *y * (z * (1.0 - e) - 1.0) / a[2];
}

void fexp1(double x, const double* a, double* y, double* dyda, int) {
  const double e = std::exp(limited(-x / a[3]));
  *y = a[1] + a[2] * e;
  dyda[1] = 1.0;
  dyda[2] = e;
  dyda[3] = x * a[2] / (a[3] * a[3] * std::pow(2.718281828, limited(x / a[3])));
}

void funcs(double x, double* afunc, int ma) {
  double power = 1.0;
  for (int i = 1; i <= ma; ++i) {
    afunc[i] = power;
    power *= x;
  }
}

}  // namespace zelvan
