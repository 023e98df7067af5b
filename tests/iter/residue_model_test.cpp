#include "iter/residue_model.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/small_alphabet.h"

namespace zelvan {
namespace {

double sum_of_targets(const ResidueModel& model) {
  const auto background = [&](int32_t code) { return model.background[static_cast<std::size_t>(code)]; };
  double sum = 0;
  for (const int32_t b : model.residues) {
    for (const int32_t c : model.residues) sum += background(b) * background(c) * model.odds[b][c];
  }
  return sum;
}

// Four equally frequent residues, +1 and -1: e^lambda / 4 + 3 e^-lambda / 4 = 1 has the root ln 3.
TEST(ResidueModel, SolvesTheScaleOfAKnownMatrix) {
  for (const int32_t precision : {1, 100}) {
    const ResidueModel model = make_residue_model(match_or_not("ACDEX", precision, -precision), precision);
    EXPECT_EQ(model.residues, (UTvector<int32_t>{0, 1, 2, 3}));
    EXPECT_NEAR(model.lambda, std::log(3.0), 1e-10);
    EXPECT_NEAR(sum_of_targets(model), 1.0, 1e-10);
    EXPECT_NEAR(model.odds[0][0], 3.0, 1e-9);
    EXPECT_NEAR(model.odds[0][1], 1.0 / 3.0, 1e-9);
  }
}

TEST(ResidueModel, TakesTheBackgroundFromTheDatabase) {
  ScoreMatrix matrix = match_or_not("ACDEX", 500, -900);
  matrix.dbcount = {699, 199, 99, 0, 5000, 0, 0, 0, 0};  // X does not count
  const ResidueModel model = make_residue_model(matrix, 100);
  const double expected[] = {700, 200, 100, 1, 0, 0, 0, 0, 0};
  for (std::size_t c = 0; c < 9; ++c) EXPECT_NEAR(model.background[c], expected[c] / 1001, 1e-12);
  EXPECT_NEAR(sum_of_targets(model), 1.0, 1e-9);
}

TEST(ResidueModel, FallsBackToHalfBits) {
  for (const auto& [match, mismatch] : {std::pair(500, 100), {-100, -100}, {300, -100}}) {
    const ResidueModel model = make_residue_model(match_or_not("ACDEX", match, mismatch), 100);
    EXPECT_NEAR(model.lambda, std::log(2.0) / 2, 1e-12) << match << " " << mismatch;
  }
}

}  // namespace
}  // namespace zelvan
