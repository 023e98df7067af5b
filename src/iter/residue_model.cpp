#include "iter/residue_model.h"

#include <cmath>
#include <cstring>
#include <string_view>

namespace zelvan {
namespace {

constexpr double HALF_BIT = 0.34657359027997264;  // ln(2) / 2

bool in_alphabet(const ScoreMatrix& matrix, char letter) {
  return matrix.indx.find(letter) != UTstring::npos;
}

UTvector<int32_t> ordinary_residues(const ScoreMatrix& matrix) {
  UTvector<int32_t> codes;
  for (char letter = 'A'; letter <= 'Z'; ++letter) {
    if (std::strchr("BJXZ", letter) == nullptr && in_alphabet(matrix, letter)) {
      codes.push_back(residue_code(matrix, letter));
    }
  }
  return codes;
}

UTvector<AmbiguousCode> ambiguous_codes(const ScoreMatrix& matrix) {
  UTvector<AmbiguousCode> codes;
  for (const std::string_view line : {"BDN", "ZEQ", "JIL"}) {
    if (!in_alphabet(matrix, line[0])) continue;
    AmbiguousCode ambiguous;
    ambiguous.code = residue_code(matrix, line[0]);
    for (const char member : line.substr(1)) {
      if (in_alphabet(matrix, member)) ambiguous.members.push_back(residue_code(matrix, member));
    }
    if (!ambiguous.members.empty()) codes.push_back(ambiguous);
  }
  return codes;
}

UTvector<double> background_frequencies(const ScoreMatrix& matrix, const UTvector<int32_t>& residues) {
  UTvector<double> background(static_cast<std::size_t>(matrix.inlen), 0.0);
  double total = 0;
  for (const int32_t a : residues) {
    const auto at = static_cast<std::size_t>(a);
    background[at] = 1.0 + static_cast<double>(matrix.dbcount[at]);
    total += background[at];
  }
  for (double& frequency : background) frequency /= total;
  return background;
}

// Sum over all residue pairs of p_b p_c exp(lambda s(b, c)).
double pair_sum(const ScoreMatrix& matrix, const ResidueModel& model, double lambda, int32_t precision) {
  double sum = 0;
  for (const int32_t b : model.residues) {
    for (const int32_t c : model.residues) {
      sum += model.background[static_cast<std::size_t>(b)] * model.background[static_cast<std::size_t>(c)] *
             std::exp(lambda * matrix.pairscore[b][c] / precision);
    }
  }
  return sum;
}

// The sum is 1 at lambda 0, convex, and falls first when the expected score is negative: the positive root,
// if there is one, lies between the last point below 1 and the first above it.
double solve_lambda(const ScoreMatrix& matrix, const ResidueModel& model, int32_t precision) {
  constexpr double SMALLEST = 1e-4, LARGEST = 100.0;
  constexpr int BISECTIONS = 60;
  if (!(pair_sum(matrix, model, SMALLEST, precision) < 1.0)) return HALF_BIT;
  double low = SMALLEST, high = SMALLEST;
  while (pair_sum(matrix, model, high, precision) < 1.0) {
    low = high;
    high *= 2;
    if (high > LARGEST) return HALF_BIT;
  }
  for (int step = 0; step < BISECTIONS; ++step) {
    const double middle = (low + high) / 2;
    (pair_sum(matrix, model, middle, precision) < 1.0 ? low : high) = middle;
  }
  return (low + high) / 2;
}

}  // namespace

ResidueModel make_residue_model(const ScoreMatrix& matrix, int32_t precision) {
  ResidueModel model;
  model.residues = ordinary_residues(matrix);
  model.ambiguous = ambiguous_codes(matrix);
  model.background = background_frequencies(matrix, model.residues);
  model.lambda = solve_lambda(matrix, model, precision);
  model.odds = make_table<double>(matrix.inlen, matrix.inlen, 0.0);
  for (const int32_t b : model.residues) {
    for (const int32_t c : model.residues) {
      model.odds[b][c] = std::exp(model.lambda * matrix.pairscore[b][c] / precision);
    }
  }
  return model;
}

}  // namespace zelvan
