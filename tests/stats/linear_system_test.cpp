#include "stats/numerics/linear_system.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "numerics_problem.h"

namespace {

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
    auto before = a.elements;
    auto rhs = b.elements;
    ASSERT_EQ(gaussj(a.get(), n, b.get(), 2), 0);
    for (std::size_t i = 1; i <= size; ++i) {
      for (std::size_t j = 1; j <= size; ++j) {
        double product = 0;
        for (std::size_t k = 1; k <= size; ++k) product += before[i][k] * a.elements[k][j];
        EXPECT_NEAR(product, i == j ? 1.0 : 0.0, 1e-9);
      }
      for (std::size_t j = 1; j <= 2; ++j) {
        double product = 0;
        for (std::size_t k = 1; k <= size; ++k) product += before[i][k] * b.elements[k][j];
        EXPECT_NEAR(product, rhs[i][j], 1e-9);
      }
    }
  }
}

TEST(Gaussj, ToldByCodeWhenThereIsNoInverse) {
  for (const double last : {4.0, std::numeric_limits<double>::quiet_NaN()}) {
    SmallMatrix a(2, 2), b(2, 1);
    a.get()[1][1] = last / 4, a.get()[1][2] = last / 2, a.get()[2][1] = last / 2, a.get()[2][2] = last;
    EXPECT_EQ(gaussj(a.get(), 2, b.get(), 1), 33);
  }
}

TEST(Covsrt, HeldParametersGetZeros) {
  SmallMatrix covar(4, 4);
  const int ia[5] = {0, 0, 1, 0, 1};
  covar.get()[1][1] = 1, covar.get()[1][2] = covar.get()[2][1] = 2, covar.get()[2][2] = 3;
  covar.get()[3][1] = covar.get()[4][4] = 99;  // left over from before
  covsrt(covar.get(), 4, ia, 2);
  const double expected[5][5] = {{}, {}, {0, 0, 1, 0, 2}, {}, {0, 0, 2, 0, 3}};
  for (int i = 1; i <= 4; ++i) {
    for (int j = 1; j <= 4; ++j) EXPECT_EQ(covar.get()[i][j], expected[i][j]) << i << ' ' << j;
  }
}

}  // namespace
