#include "stats/numerics/linear_fit.h"

#include <gtest/gtest.h>

#include "numerics_problem.h"

namespace {

const auto X = one_based({1, 2, 3, 4, 5});
const auto SIGMA = one_based({0.5, 0.5, 0.5, 0.5, 0.5});

TEST(Lfit, GivesTheLeastSquaresLineAndItsCovariance) {
  const auto y = one_based({1, 3, 2, 5, 4});  // slope 0.8, intercept 0.6 by hand
  auto a = one_based({9, 9});
  const int ia[3] = {0, 1, 1};
  SmallMatrix covar(2, 2);
  double chisq = 0;
  ASSERT_EQ(lfit(X.data(), y.data(), SIGMA.data(), 5, a.data(), ia, 2, covar.get(), &chisq, funcs), 0);
  EXPECT_NEAR(a[1], 0.6, 1e-12);
  EXPECT_NEAR(a[2], 0.8, 1e-12);
  EXPECT_NEAR(chisq, 3.6 / 0.25, 1e-12);
  EXPECT_NEAR(covar.get()[2][2], 0.25 / 10, 1e-12);
  EXPECT_NEAR(covar.get()[1][1], 0.25 * (0.2 + 9.0 / 10), 1e-12);
}

TEST(Lfit, AHeldCoefficientStays) {
  const auto y = one_based({12, 14, 16, 18, 20});
  auto a = one_based({10, 0});
  const int ia[3] = {0, 0, 1};
  SmallMatrix covar(2, 2);
  double chisq = 1;
  ASSERT_EQ(lfit(X.data(), y.data(), SIGMA.data(), 5, a.data(), ia, 2, covar.get(), &chisq, funcs), 0);
  EXPECT_EQ(a[1], 10);
  EXPECT_NEAR(a[2], 2, 1e-12);
  EXPECT_EQ(covar.get()[1][1], 0);
  EXPECT_NEAR(covar.get()[2][2], 0.25 / 55, 1e-12);
}

TEST(Lfit, PointsAtOneAbscissaAreSingular) {
  const auto x = one_based({0, 0});
  auto a = one_based({0, 0});
  const int ia[3] = {0, 0, 1};
  SmallMatrix covar(2, 2);
  double chisq = 0;
  EXPECT_EQ(lfit(x.data(), X.data(), SIGMA.data(), 2, a.data(), ia, 2, covar.get(), &chisq, funcs), 33);
}

}  // namespace
