// The numerics under their published names: 1-based arrays, failures told by code.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <random>

#include "stats/numerics/allocators.h"
#include "stats/numerics/levenberg_marquardt.h"
#include "stats/numerics/linear_fit.h"
#include "stats/numerics/linear_system.h"
#include "stats/numerics/models.h"
#include "stats/numerics/parameter_fits.h"
#include "support/capture.h"

namespace {

using Vector = std::vector<double>;

// Element 0 is unused.
Vector one_based(std::initializer_list<double> values) {
  Vector v{0.0};
  v.insert(v.end(), values);
  return v;
}

// A matrix with rows 1..rows and columns 1..columns, all zero.
struct SmallMatrix {
  std::vector<Vector> elements;
  std::vector<double*> handles;

  SmallMatrix(std::size_t rows, std::size_t columns) : elements(rows + 1, Vector(columns + 1)) {
    for (Vector& row : elements) handles.push_back(row.data());
  }
  double** get() { return handles.data(); }
};

// Row i times the columns of `b`.
Vector product(const Vector& row, const SmallMatrix& b) {
  Vector sums(b.elements[0].size());
  for (std::size_t k = 1; k < row.size(); ++k) {
    for (std::size_t j = 1; j < sums.size(); ++j) sums[j] += row[k] * b.elements[k][j];
  }
  return sums;
}

TEST(Allocators, WhatCannotBeHadIsToldByCode) {
  int* iv = nullptr;
  double* v = nullptr;
  double** m = nullptr;
  EXPECT_EQ(ivector(1, LONG_MAX, &iv), 12);
  EXPECT_EQ(dvector(1, LONG_MAX, &v), 15);
  EXPECT_EQ(vector(1, LONG_MAX, &v), 11);
  EXPECT_EQ(dmatrix(1, LONG_MAX, 1, 1, &m), 17);
  EXPECT_EQ(dmatrix(1, 1000, 1, LONG_MAX / 2, &m), 171);
  EXPECT_TRUE(iv == nullptr && v == nullptr && m == nullptr);
  free_dmatrix(m, 1, 1000, 1, LONG_MAX / 2);
}

TEST(Models, DerivativesAreThoseOfTheValue) {
  const struct {
    FitModel model;
    Vector a, x;
  } cases[] = {{fextrem_val2pt, {0, 30, 4}, {-5, 20, 31.5, 60, 200}},
               {fexp1, {0, -2, 1, -5}, {4, 11, 20}},
               {fexp1, {0, 80, -60, 9}, {4, 11, 20}}};
  for (const auto& [model, a, abscissas] : cases) {
    const int ma = static_cast<int>(a.size()) - 1;
    Vector dyda(a.size()), ignored(a.size());
    double y = 0, above = 0, below = 0;
    for (const double x : abscissas) {
      model(x, a.data(), &y, dyda.data(), ma);
      for (std::size_t j = 1; j < a.size(); ++j) {
        const double step = 1e-5 * std::fabs(a[j]);
        Vector b = a;
        b[j] = a[j] + step;
        model(x, b.data(), &above, ignored.data(), ma);
        b[j] = a[j] - step;
        model(x, b.data(), &below, ignored.data(), ma);
        EXPECT_NEAR(dyda[j], (above - below) / (2 * step), 1e-6 * (1 + std::fabs(dyda[j]))) << j << " " << x;
      }
    }
  }
}

TEST(Models, OneDerivativeTakesARoundedE) {
  const double a[4] = {0, 1, 1, 1};
  double y = 0, dyda[4];
  fexp1(200, a, &y, dyda, 3);
  EXPECT_NEAR(dyda[3] / (200 * std::exp(-200.0)) - 1, 200 * (1 - std::log(2.718281828)), 1e-12);
}

TEST(Models, FarFromTheDataTheyStayFinite) {
  for (const FitModel model : {fextrem_val2pt, fexp1}) {
    for (const double x : {-1e6, 0.0, 1e6}) {
      const double a[4] = {0, 10, 1e-3, -1e-3};
      double y = 0, dyda[4] = {};
      model(x, a, &y, dyda, 3);
      EXPECT_TRUE(std::isfinite(y + dyda[1] + dyda[2] + dyda[3])) << x;
    }
  }
}

TEST(Gaussj, InvertsAndSolvesRandomSystems) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> value(-1, 1);
  for (int n = 1; n <= 8; ++n) {
    const auto size = static_cast<std::size_t>(n);
    SmallMatrix a(size, size), b(size, 2);
    for (int i = 1; i <= n; ++i) {
      for (int j = 1; j <= n; ++j) a.get()[i][j] = i == j && n > 1 ? 0.0 : value(random);  // must pivot
      for (int j = 1; j <= 2; ++j) b.get()[i][j] = value(random);
    }
    const auto before = a.elements, right = b.elements;
    ASSERT_EQ(gaussj(a.get(), n, b.get(), 2), 0);
    for (std::size_t i = 1; i <= size; ++i) {
      const Vector unit = product(before[i], a), again = product(before[i], b);
      for (std::size_t j = 1; j <= size; ++j) EXPECT_NEAR(unit[j], i == j ? 1.0 : 0.0, 1e-9);
      for (std::size_t j = 1; j <= 2; ++j) EXPECT_NEAR(again[j], right[i][j], 1e-9);
    }
  }
  for (const double last : {4.0, std::numeric_limits<double>::quiet_NaN()}) {
    SmallMatrix a(2, 2), b(2, 1);
    a.elements = {{}, {0, last / 4, last / 2}, {0, last / 2, last}};
    for (std::size_t i = 1; i <= 2; ++i) a.handles[i] = a.elements[i].data();
    EXPECT_EQ(gaussj(a.get(), 2, b.get(), 1), 33) << "no inverse";
  }
}

// By hand: slope 0.8, intercept 0.6. The fits of a slope alone are below.
TEST(Lfit, GivesTheLeastSquaresLineAndItsCovariance) {
  const auto x = one_based({1, 2, 3, 4, 5}), y = one_based({1, 3, 2, 5, 4}), sigma = Vector(6, 0.5);
  auto a = one_based({9, 9});
  const int ia[3] = {0, 1, 1};
  SmallMatrix covar(2, 2);
  double chisq = 7;
  ASSERT_EQ(lfit(x.data(), y.data(), sigma.data(), 5, a.data(), ia, 2, covar.get(), &chisq, funcs), 0);
  EXPECT_NEAR(a[1], 0.6, 1e-12);
  EXPECT_NEAR(a[2], 0.8, 1e-12);
  EXPECT_NEAR(chisq, 3.6 / 0.25, 1e-12);
  EXPECT_NEAR(covar.get()[1][1], 0.25 * 1.1, 1e-12);
  EXPECT_NEAR(covar.get()[2][2], 0.25 / 10, 1e-12);
}

// One fit of fexp1 to exact data, with a step at a time.
struct Exponential {
  Vector x = one_based({0, 1, 2, 3, 4, 5, 6}), y{0.0}, sigma = Vector(8, 1.0), a = one_based({0, 1, 1});
  SmallMatrix covar{3, 3}, alpha{3, 3};
  double chisq = 0;
  double alamda = -1;

  Exponential() {
    for (std::size_t i = 1; i < x.size(); ++i) y.push_back(2 + 5 * std::exp(-x[i] / 3));
  }
  int step(const int* ia) {
    return mrqmin(x.data(), y.data(), sigma.data(), 7, a.data(), ia, 3, covar.get(), alpha.get(), &chisq,
                  fexp1, &alamda);
  }
};

TEST(Mrqmin, FindsTheParametersAndDampsByTheRule) {
  const int ia[4] = {0, 1, 1, 1};
  Exponential fit;
  fit.a = one_based({0, 1, 0.3});  // so far off that some steps are refused
  int refused = 0;
  ASSERT_EQ(fit.step(ia), 0);
  EXPECT_TRUE(fit.alamda == 0.001 * 0.1 || fit.alamda == 0.001 * 10.0);
  for (int k = 0; k < 60 && fit.chisq >= 1e-20; ++k) {
    const Vector kept = fit.a;
    const double chisq = fit.chisq, alamda = fit.alamda;
    ASSERT_EQ(fit.step(ia), 0);
    const bool better = fit.chisq < chisq;
    EXPECT_EQ(fit.alamda, alamda * (better ? 0.1 : 10.0));
    EXPECT_TRUE(better || (fit.chisq == chisq && fit.a == kept));
    refused += better ? 0 : 1;
  }
  EXPECT_GT(refused, 0);
  const double truth[] = {0, 2, 5, 3};
  fit.alamda = 0;
  ASSERT_EQ(fit.step(ia), 0);
  for (std::size_t j = 1; j <= 3; ++j) {
    EXPECT_NEAR(fit.a[j], truth[j], 1e-6);
    EXPECT_GT(fit.covar.elements[j][j], 0);
  }
}

TEST(Mrqmin, AFitAfterADroppedOrFailedOneStartsAfresh) {
  const int all[4] = {0, 1, 1, 1}, but_one[4] = {0, 1, 0, 1};
  Exponential dropped, failing, last;
  ASSERT_EQ(dropped.step(all), 0);
  failing.a[2] = 0;  // the third parameter has no influence then
  EXPECT_EQ(failing.step(all), 33);
  last.a = one_based({7, 5, 2});
  for (int k = 0; k < 20; ++k) ASSERT_EQ(last.step(but_one), 0);
  last.alamda = 0;
  ASSERT_EQ(last.step(but_one), 0);
  EXPECT_NEAR(last.a[1], 2, 1e-6);
  EXPECT_EQ(last.a[2], 5) << "held";
  EXPECT_NEAR(last.a[3], 3, 1e-6);
  EXPECT_EQ(last.covar.elements[2], Vector(4));
  EXPECT_NE(last.covar.elements[1][3], 0);
}

const auto TENTHS = one_based({90, 95, 100, 105, 110, 115, 120});
const auto TRUTH = one_based({20, 1.5, -5});

Vector exponential(const Vector& a) {
  Vector y{0.0};
  for (std::size_t i = 1; i < TENTHS.size(); ++i) y.push_back(a[1] + a[2] * std::exp(-TENTHS[i] / 10 / a[3]));
  return y;
}

// From the usual start; what is no number ends with a code.
TEST(ExpfitPARAMA, RecoversTheCurve) {
  constexpr double infinite = std::numeric_limits<double>::infinity();
  for (const double disturbance : {0.0, std::nan(""), infinite}) {
    const Vector truth = exponential(TRUTH);
    Vector y = truth;
    y[3] += disturbance;
    auto a = one_based({-2, 1, -1});
    int error = 0;
    const int status = expfitPARAMA(TENTHS.data(), y.data(), 7, a.data(), &error, 0, nullptr);
    EXPECT_EQ(error, status);
    if (disturbance == 0.0) {
      const Vector fitted = exponential(a);
      for (std::size_t i = 1; i < fitted.size(); ++i) EXPECT_NEAR(fitted[i], truth[i], 0.3);
    } else {
      EXPECT_TRUE(status == 33 || status == 34) << status;
    }
  }
}

TEST(ExpfitPARAMA, EightStepsThatDoNotMoveEndIt) {
  const Vector y = exponential(TRUTH);
  Vector a = TRUTH;
  int error = 0;
  const std::string trace = written([&](FILE* stream) {
    ASSERT_EQ(expfitPARAMA(TENTHS.data(), y.data(), 7, a.data(), &error, 1, stream), 0);
  });
  EXPECT_EQ(a, TRUTH);
  EXPECT_EQ(count_of(trace, "\nIteration #"), 8);
}

TEST(LinfitPARAMB2, FitsTheSlopeOnly) {
  const auto y = one_based({4, 1, 9}), x = one_based({10, 20, 30}), zero = one_based({0, 0});
  auto a = one_based({-2, 1, -1});
  int error = 0;
  ASSERT_EQ(linfitPARAMB2(x.data(), y.data(), 3, a.data(), &error, 0, nullptr), 0);
  EXPECT_EQ(a[1], 0.0);
  EXPECT_NEAR(a[2], 33.0 / 14, 1e-12);
  EXPECT_EQ(a[3], -1.0);
  EXPECT_EQ(linfitPARAMB2(zero.data(), zero.data(), 2, a.data(), &error, 0, nullptr), 33) << "singular";
  EXPECT_EQ(error, 33);
}

}  // namespace
