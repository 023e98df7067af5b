#include "stats/numerics/allocators.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(Allocators, ElementsAreAddressedFromTheLowerBound) {
  int* iv = nullptr;
  double* dv = nullptr;
  double* v = nullptr;
  ASSERT_EQ(ivector(1, 3, &iv), 0);
  ASSERT_EQ(dvector(0, 2, &dv), 0);
  ASSERT_EQ(vector(1, 0, &v), 0);  // empty, yet an object
  iv[1] = 1, iv[3] = 3, dv[0] = 5, dv[2] = 7;
  EXPECT_NE(v, nullptr);
  free_ivector(iv, 1, 3);
  free_dvector(dv, 0, 2);
  free_vector(v, 1, 0);
}

TEST(Allocators, AMatrixIsOneBlockInRowOrder) {
  double** m = nullptr;
  ASSERT_EQ(dmatrix(1, 3, 1, 4, &m), 0);
  for (int i = 1; i <= 3; ++i) {
    for (int j = 1; j <= 4; ++j) m[i][j] = 10 * i + j;
  }
  for (int k = 0; k < 12; ++k) EXPECT_EQ((&m[1][1])[k], 10 * (k / 4 + 1) + k % 4 + 1);
  free_dmatrix(m, 1, 3, 1, 4);
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
  EXPECT_EQ(iv, nullptr);
  EXPECT_EQ(v, nullptr);
  EXPECT_EQ(m, nullptr);
  free_dmatrix(m, 1, 1000, 1, LONG_MAX / 2);
}

}  // namespace
