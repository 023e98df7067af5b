#include "stats/numerics/levenberg_marquardt.h"

#include <gtest/gtest.h>

#include <cmath>

#include "numerics_problem.h"

namespace {

// One fit of fexp1 to exact data, with a step at a time.
struct Exponential {
  std::vector<double> x = one_based({0, 1, 2, 3, 4, 5, 6});
  std::vector<double> y{0.0};
  std::vector<double> sigma = std::vector<double>(8, 1.0);
  std::vector<double> a = one_based({0, 1, 1});
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
  ASSERT_EQ(fit.step(ia), 0);
  EXPECT_TRUE(fit.alamda == 0.001 * 0.1 || fit.alamda == 0.001 * 10.0);
  for (int k = 0; k < 60; ++k) {
    const auto kept = fit.a;
    const double chisq = fit.chisq, alamda = fit.alamda;
    ASSERT_EQ(fit.step(ia), 0);
    if (fit.chisq < chisq) {
      EXPECT_EQ(fit.alamda, alamda * 0.1);
    } else {
      EXPECT_EQ(fit.alamda, alamda * 10.0);
      EXPECT_EQ(fit.chisq, chisq);
      EXPECT_EQ(fit.a, kept);
    }
    if (fit.chisq < 1e-20) break;
  }
  EXPECT_NEAR(fit.a[1], 2, 1e-6);
  EXPECT_NEAR(fit.a[2], 5, 1e-6);
  EXPECT_NEAR(fit.a[3], 3, 1e-6);
  fit.alamda = 0;
  ASSERT_EQ(fit.step(ia), 0);
  for (int j = 1; j <= 3; ++j) EXPECT_GT(fit.covar.get()[j][j], 0);
}

TEST(Mrqmin, AHeldParameterStaysAndHasNoCovariance) {
  const int ia[4] = {0, 1, 1, 0};
  Exponential fit;
  fit.a[3] = 3;
  for (int k = 0; k < 5; ++k) ASSERT_EQ(fit.step(ia), 0);
  EXPECT_EQ(fit.a[3], 3);
  EXPECT_NEAR(fit.a[2], 5, 1e-6);
  fit.alamda = 0;
  ASSERT_EQ(fit.step(ia), 0);
  EXPECT_EQ(fit.covar.get()[3][3], 0);
  EXPECT_EQ(fit.covar.get()[3][1], 0);
}

TEST(Mrqmin, AFitAfterADroppedOrFailedOneStartsAfresh) {
  const int all[4] = {0, 1, 1, 1}, one[4] = {0, 1, 0, 0};
  Exponential dropped, failing, last;
  ASSERT_EQ(dropped.step(all), 0);
  failing.a[2] = 0;  // the third parameter has no influence then
  EXPECT_EQ(failing.step(all), 33);
  last.a = one_based({7, 5, 3});
  for (int k = 0; k < 5; ++k) ASSERT_EQ(last.step(one), 0);
  EXPECT_NEAR(last.a[1], 2, 1e-6);
  last.alamda = 0;
  ASSERT_EQ(last.step(one), 0);
  EXPECT_NEAR(last.covar.get()[1][1], 1.0 / 7, 1e-12);
}

}  // namespace
