// The numerics under their published names: 1-based arrays, failures told by code.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "stats/numerics/levenberg_marquardt.h"
#include "stats/numerics/linear_least_squares.h"
#include "stats/numerics/model_fits.h"

namespace zelvan {
namespace {

using Vector = std::vector<double>;

// Element 0 is unused.
Vector one_based(std::initializer_list<double> values) {
  Vector v{0.0};
  v.insert(v.end(), values);
  return v;
}

// A matrix with rows 1..rows and columns 1..columns, as unset as fresh memory.
struct SmallMatrix {
  std::vector<Vector> elements;
  std::vector<double*> handles;

  SmallMatrix(std::size_t rows, std::size_t columns) : elements(rows + 1, Vector(columns + 1, 9.0)) {
    for (Vector& row : elements) handles.push_back(row.data());
  }
  double** get() { return handles.data(); }
};

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

// The zeros on the diagonal make it pivot.
TEST(Gaussj, InvertsAndSolvesRandomSystems) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> value(-1, 1);
  for (std::size_t n = 1; n <= 8; ++n) {
    SmallMatrix a(n, n), b(n, 1);
    for (std::size_t i = 1; i <= n; ++i) {
      for (std::size_t j = 1; j <= n; ++j) a.elements[i][j] = i == j && n > 1 ? 0.0 : value(random);
      b.elements[i][1] = value(random);
    }
    const auto before = a.elements, right = b.elements;
    ASSERT_EQ(gaussj(a.get(), static_cast<int>(n), b.get(), 1), 0);
    for (std::size_t i = 1; i <= n; ++i) {
      double again = 0;
      Vector unit(n + 1);
      for (std::size_t k = 1; k <= n; ++k) {
        again += before[i][k] * b.elements[k][1];
        for (std::size_t j = 1; j <= n; ++j) unit[j] += before[i][k] * a.elements[k][j];
      }
      EXPECT_NEAR(again, right[i][1], 1e-9);
      for (std::size_t j = 1; j <= n; ++j) EXPECT_NEAR(unit[j], i == j ? 1.0 : 0.0, 1e-9);
    }
  }
}

// By hand: slope 0.8, intercept 0.6; with the intercept held at 1 a slope of 38/55.
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

  const int slope_only[3] = {0, 0, 1};
  a[1] = 1;
  ASSERT_EQ(lfit(x.data(), y.data(), sigma.data(), 5, a.data(), slope_only, 2, covar.get(), &chisq, funcs),
            0);
  EXPECT_EQ(a[1], 1);
  EXPECT_NEAR(a[2], 38.0 / 55, 1e-12);
  EXPECT_NEAR(chisq, (30 - 38 * 38 / 55.0) / 0.25, 1e-12);
}

// A fit of fexp1 to exact data, step by step.
struct Exponential {
  Vector x = one_based({0, 1, 2, 3, 4, 5, 6}), y{0.0}, sigma = Vector(8, 1.0), a;
  SmallMatrix covar{3, 3}, alpha{3, 3};
  double chisq = 0;
  double alamda = -1;

  explicit Exponential(std::initializer_list<double> start) : a(one_based(start)) {
    for (std::size_t i = 1; i < x.size(); ++i) y.push_back(2 + 5 * std::exp(-x[i] / 3));
  }
  int step(std::initializer_list<int> fitted) {
    return mrqmin(x.data(), y.data(), sigma.data(), 7, a.data(), fitted.begin(), 3, covar.get(), alpha.get(),
                  &chisq, fexp1, &alamda);
  }
};

// Here after a fit that was dropped and one that failed.
TEST(Mrqmin, EveryFitStartsAfreshAndHoldsWhatItShould) {
  Exponential dropped({0, 1, 1}), failing({0, 0, 1});  // whose third parameter has no influence
  ASSERT_EQ(dropped.step({0, 1, 1, 1}), 0);
  EXPECT_EQ(failing.step({0, 1, 1, 1}), 33);
  Exponential fit({7, 5, 2});
  for (int k = 0; k <= 20; ++k) {
    if (k == 20) fit.alamda = 0;
    const Vector before = fit.a;
    const double chisq = k == 0 ? HUGE_VAL : fit.chisq, alamda = k == 0 ? 0.001 : fit.alamda;
    ASSERT_EQ(fit.step({0, 1, 0, 1}), 0);
    EXPECT_TRUE(fit.chisq < chisq || fit.a == before) << "no step makes it worse";
    EXPECT_EQ(fit.alamda, alamda * (fit.chisq < chisq ? 0.1 : 10.0));
  }
  EXPECT_NEAR(fit.a[1], 2, 1e-6);
  EXPECT_EQ(fit.a[2], 5) << "held";
  EXPECT_NEAR(fit.a[3], 3, 1e-6);
  EXPECT_GT(fit.covar.elements[1][1], 0);
  EXPECT_NE(fit.covar.elements[1][3], 0);
  for (std::size_t j = 1; j <= 3; ++j) {
    EXPECT_EQ(fit.covar.elements[2][j], 0) << j;
    EXPECT_EQ(fit.covar.elements[j][2], 0) << j;
  }
}

TEST(FitUntilQuiet, ConvergesUnlessItsStepsAreUsedUp) {
  for (const int max_steps : {2, 100}) {
    Exponential data({0, 1, 1});
    const int ia[4] = {0, 1, 1, 1};
    MarquardtFit fit = {.model = fexp1,
                        .x = data.x.data(),
                        .y = data.y.data(),
                        .sig = data.sigma.data(),
                        .ndata = 7,
                        .a = data.a.data(),
                        .ia = ia,
                        .ma = 3,
                        .covar = data.covar.get(),
                        .alpha = data.alpha.get()};
    int announced = 0;
    const StoppingRule rule = {.tolerance = 1e-9, .quiet_steps = 3, .max_steps = max_steps};
    ASSERT_EQ(fit_until_quiet(fit, rule, [&] { ++announced; }), 0);
    EXPECT_EQ(announced, fit.steps);
    EXPECT_EQ(fit.converged, max_steps == 100);
    EXPECT_EQ(fit.steps == 2, max_steps == 2);
    EXPECT_EQ(std::fabs(data.a[3] - 3) < 1e-4, fit.converged);
  }
}

// From the usual start; NaN ends with a code.
TEST(ExpfitPARAMA, RecoversTheCurve) {
  const auto tenths = one_based({90, 95, 100, 105, 110, 115, 120});
  const auto curve = [&tenths](const Vector& a, std::size_t i) {
    return a[1] + a[2] * std::exp(-tenths[i] / 10 / a[3]);
  };
  for (const double disturbance : {0.0, std::nan("")}) {
    Vector y{0.0};
    for (std::size_t i = 1; i <= 7; ++i) y.push_back(curve({0, 20, 1.5, -5}, i) + disturbance);
    auto a = one_based({-2, 1, -1});
    int error = 0;
    const int status = expfitPARAMA(tenths.data(), y.data(), 7, a.data(), &error, 0, nullptr);
    EXPECT_EQ(error, status);
    if (disturbance == 0.0) {
      for (std::size_t i = 1; i <= 7; ++i) EXPECT_NEAR(curve(a, i), y[i], 0.3);
    } else {
      EXPECT_TRUE(status == 33 || status == 34) << status;
    }
  }
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
}  // namespace zelvan
