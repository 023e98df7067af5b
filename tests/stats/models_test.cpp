#include "stats/numerics/models.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

void expect_derivatives(FitModel model, std::vector<double> a, double x) {
  const int ma = static_cast<int>(a.size()) - 1;
  double y = 0;
  std::vector<double> dyda(a.size()), ignored(a.size());
  model(x, a.data(), &y, dyda.data(), ma);
  for (std::size_t j = 1; j < a.size(); ++j) {
    const double step = 1e-5 * std::fabs(a[j]);
    double above = 0, below = 0;
    std::vector<double> b = a;
    b[j] = a[j] + step;
    model(x, b.data(), &above, ignored.data(), ma);
    b[j] = a[j] - step;
    model(x, b.data(), &below, ignored.data(), ma);
    EXPECT_NEAR(dyda[j], (above - below) / (2 * step), 1e-6 * (1 + std::fabs(dyda[j]))) << j << " at " << x;
  }
}

TEST(Models, DerivativesAreThoseOfTheValue) {
  for (const double x : {-5.0, 20.0, 31.5, 60.0, 200.0}) expect_derivatives(fextrem_val2pt, {0, 30, 4}, x);
  for (const double x : {4.0, 11.0, 20.0}) {
    expect_derivatives(fexp1, {0, -2, 1, -5}, x);
    expect_derivatives(fexp1, {0, 80, -60, 9}, x);
  }
}

TEST(Models, TheDensityHasItsPeakAtTheLocationAndAnAreaOfOne) {
  const double a[3] = {0, 30, 4};
  double area = 0, y = 0, dyda[3];
  for (int k = -1000; k < 20000; ++k) {
    fextrem_val2pt(k / 100.0, a, &y, dyda, 2);
    area += y / 100;
  }
  EXPECT_NEAR(area, 1.0, 1e-9);
  fextrem_val2pt(30, a, &y, dyda, 2);
  EXPECT_NEAR(y, std::exp(-1.0) / 4, 1e-15);
  EXPECT_EQ(dyda[1], 0);
}

TEST(Models, OneDerivativeTakesARoundedE) {
  const double a[4] = {0, 1, 1, 1};
  double y = 0, dyda[4];
  fexp1(200, a, &y, dyda, 3);
  const double ratio = dyda[3] / (200 * std::exp(-200.0));
  EXPECT_NEAR(ratio - 1, 200 * (1 - std::log(2.718281828)), 1e-12);
}

TEST(Models, FarFromTheDataTheyStayFinite) {
  double y = 0, dyda[4];
  for (const double scale : {1e-3, -1e-3, 4.0}) {
    for (const double x : {-1e6, 0.0, 1e6}) {
      const double a[4] = {0, 10, scale, scale};
      fextrem_val2pt(x, a, &y, dyda, 2);
      EXPECT_TRUE(std::isfinite(y) && std::isfinite(dyda[1]) && std::isfinite(dyda[2])) << scale << ' ' << x;
      fexp1(x, a, &y, dyda, 3);
      EXPECT_TRUE(std::isfinite(y) && std::isfinite(dyda[2]) && std::isfinite(dyda[3])) << scale << ' ' << x;
    }
  }
}

TEST(Models, TheBasisOfALineIsOneAndX) {
  double afunc[3];
  funcs(2.5, afunc, 2);
  EXPECT_EQ(afunc[1], 1.0);
  EXPECT_EQ(afunc[2], 2.5);
}

}  // namespace
