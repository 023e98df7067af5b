#include "stats/numerics/parameter_fits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "numerics_problem.h"
#include "support/capture.h"

namespace {

const auto TENTHS = one_based({90, 95, 100, 105, 110, 115, 120});

std::vector<double> exponential(const std::vector<double>& a) {
  std::vector<double> y{0.0};
  for (std::size_t i = 1; i < TENTHS.size(); ++i) y.push_back(a[1] + a[2] * std::exp(-TENTHS[i] / 10 / a[3]));
  return y;
}

std::size_t occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(ExpfitPARAMA, RecoversTheCurveFromTheUsualStart) {
  const auto truth = one_based({20, 1.5, -5});
  const auto y = exponential(truth);
  auto a = one_based({-2, 1, -1});
  int error = 0;
  ASSERT_EQ(expfitPARAMA(TENTHS.data(), y.data(), 7, a.data(), &error, 0, nullptr), 0);
  EXPECT_EQ(error, 0);
  const auto fitted = exponential(a);
  for (std::size_t i = 1; i < fitted.size(); ++i) EXPECT_NEAR(fitted[i], y[i], 0.3);
}

TEST(ExpfitPARAMA, EightStepsThatDoNotMoveEndIt) {
  const auto y = exponential(one_based({20, 1.5, -5}));
  auto a = one_based({20, 1.5, -5});
  int error = 0;
  const std::string trace = written([&](FILE* stream) {
    ASSERT_EQ(expfitPARAMA(TENTHS.data(), y.data(), 7, a.data(), &error, 1, stream), 0);
  });
  EXPECT_EQ(a, one_based({20, 1.5, -5}));
  EXPECT_EQ(occurrences(trace, "\nIteration #"), 8);
  EXPECT_EQ(trace.substr(0, trace.find("x[2]")), "x[1] = 9.000000, y[1] = 29.074471\n");
  EXPECT_NE(trace.find("\n\nIteration #  1      chi-squared:     0.0000    alamda:  1.00e-02 itst: 0\n"
                       "param[1] param[2] param[3]\n  20.0000   1.5000  -5.0000\n"),
            std::string::npos)
      << trace;
  const std::string tail = trace.substr(trace.find("\nUncertainties:\n"));
  EXPECT_EQ(tail.substr(tail.find("\nFINAL")),
            "\nFINAL A     20.0000                1.5000               -5.0000             0.000000\n");
  EXPECT_EQ(tail.find("\nFINAL"), 16 + 3 * 9);
}

TEST(ExpfitPARAMA, WhatIsNoNumberEndsWithACode) {
  for (const double bad :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    auto y = exponential(one_based({20, 1.5, -5}));
    y[3] = bad;
    auto a = one_based({-2, 1, -1});
    int error = 0;
    const int status = expfitPARAMA(TENTHS.data(), y.data(), 7, a.data(), &error, 0, nullptr);
    EXPECT_TRUE(status == 33 || status == 34) << status;
    EXPECT_EQ(error, status);
  }
}

TEST(LinfitPARAMB2, FitsTheSlopeOnly) {
  const auto y = one_based({4, 1, 9});
  const auto x = one_based({10, 20, 30});
  auto a = one_based({-2, 1, -1});
  int error = 0;
  const std::string trace = written(
      [&](FILE* stream) { ASSERT_EQ(linfitPARAMB2(x.data(), y.data(), 3, a.data(), &error, 1, stream), 0); });
  EXPECT_EQ(a[1], 0.0);
  EXPECT_NEAR(a[2], 33.0 / 14, 1e-12);
  EXPECT_EQ(a[3], -1.0);
  EXPECT_EQ(trace,
            "\nParameter B fitting:\n\n  parameter           uncertainty\n"
            "  linparam[1] = 0.000000     0.000000\n  linparam[2] = 2.357143     0.000267\n"
            "chi-squared = 20214285.714286\nfull covariance matrix\n"
            "    0.000000    0.000000\n    0.000000    0.000000\n");
}

TEST(LinfitPARAMB2, ASingularProblemIsToldByCodeAndCell) {
  const auto zero = one_based({0, 0});
  auto a = one_based({-2, 1});
  int error = 0;
  EXPECT_EQ(linfitPARAMB2(zero.data(), zero.data(), 2, a.data(), &error, 0, nullptr), 33);
  EXPECT_EQ(error, 33);
}

}  // namespace
