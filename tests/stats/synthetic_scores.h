// Scores of unrelated sequences with known statistics: extreme-value distributed, location ln(K m n) / lambda,
// scale 1 / lambda, lengths log-normal around 300 residues.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

constexpr double LAMBDA = 0.23;
constexpr double K = 0.05;
constexpr int32_t QUERY_LENGTH = 300;

struct SyntheticScores {
  std::vector<int32_t> length;
  std::vector<int32_t> score;  // x 100
  double residues = 0;

  SyntheticScores(int32_t n, unsigned seed) {
    std::mt19937_64 random(seed);
    std::lognormal_distribution<double> lengths(std::log(300.0), 0.65);
    std::uniform_real_distribution<double> uniform(1e-15, 1.0);
    for (int32_t i = 0; i < n; ++i) {
      length.push_back(std::clamp(static_cast<int32_t>(lengths(random)), 8, 35000));
      residues += length.back();
      const double gumbel = -std::log(-std::log(uniform(random)));
      const double s = (std::log(K * QUERY_LENGTH * length.back()) + gumbel) / LAMBDA;
      score.push_back(static_cast<int32_t>(std::max(s, 0.0) * 100));
    }
  }
};
