// 1-based arrays for the tests of the fitting routines.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

// Element 0 is unused.
inline std::vector<double> one_based(std::initializer_list<double> values) {
  std::vector<double> v{0.0};
  v.insert(v.end(), values);
  return v;
}

// A matrix with rows 1..rows and columns 1..columns, all zero.
struct SmallMatrix {
  std::vector<std::vector<double>> elements;
  std::vector<double*> handles;

  SmallMatrix(std::size_t rows, std::size_t columns) : elements(rows + 1, std::vector<double>(columns + 1)) {
    for (auto& row : elements) handles.push_back(row.data());
  }
  double** get() { return handles.data(); }
};
