#include "iter/profile_counts.h"

#include <gtest/gtest.h>

#include <array>
#include <sstream>

#include "iter/family.h"

namespace zelvan {
namespace {

// What calc_profile makes of a query and of counts in addition to it.
struct Profile {
  LookupTable table, count;
  UTvector<int32_t> total;

  Profile(const ScoreMatrix& matrix, const std::string& residues,
          std::initializer_list<std::array<int32_t, 3>> counts) {
    const Codes query = encoded(residues, matrix);
    const int32_t length = stored_length(query);
    const Params p = profile_params();
    table = make_table<int32_t>(matrix.inlen, length, 77);
    count = make_table<int32_t>(matrix.inlen, length, 0);
    for (const auto& [code, position, number] : counts) count[code][position] = number;
    total = calc_profile(query.data(), length, matrix, table, count, &p);
  }
};

// Alphabet A C X and the special codes 3 (gap), 4, 5 and 6 (stop); deliberately asymmetric.
ScoreMatrix asymmetric() {
  constexpr int32_t scores[3][3] = {{407, -150, -51}, {-233, 900, -52}, {-101, -102, -103}};
  return small_matrix(
      "ACX", [&](int32_t a, int32_t b) { return scores[a][b]; }, -1000);
}

TEST(CalcProfile, AveragesAndStretchesToTheLastInteger) {
  // C twice opposite A; opposite C three gaps and an A.
  const Profile profile(asymmetric(), "AC", {{1, 1, 2}, {3, 2, 3}, {0, 2, 1}});
  EXPECT_EQ(profile.total, (UTvector<int32_t>{1, 3, 5}));
  // Before stretching. Position 0: one gap (the pad). 1: A + 2 C. 2: A + C + 3 gaps.
  //   A: 0, (407 - 300) / 3 = 35, (407 - 150) / 5 = 51
  //   C: 0, (-233 + 1800) / 3 = 522, (-233 + 900) / 5 = 133
  //   X: 0, (-101 - 204) / 3 = -101, (-101 - 102) / 5 = -40
  //   gap: ln(1/2) = -69, 0, ln(3/8) = -98;  stop: -1000 throughout
  // Highest 522 becomes 900, lowest -1000 stays. The last entry of a row is not written.
  const char* const rows =
      "0 60 87 77  0 900 229 77  0 -101 -40 77  -69 0 -98 77  0 0 0 77  0 0 0 77 "
      "-1000 -1000 -1000 77";
  std::istringstream expected(rows);
  for (const int32_t entry : profile.table.cells) {
    int32_t number = 0;
    expected >> number;
    EXPECT_EQ(entry, number);
  }
}

}  // namespace
}  // namespace zelvan
