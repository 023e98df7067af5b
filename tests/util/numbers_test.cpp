#include "util/numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace zelvan {

TEST(Truncate, GoesTowardsZeroAndStaysWithin32Bits) {
  EXPECT_EQ(UTtruncate(2.9), 2);
  EXPECT_EQ(UTtruncate(-2.9), -2);
  EXPECT_EQ(UTtruncate(1e300), INT32_MAX);
  EXPECT_EQ(UTtruncate(-HUGE_VAL), INT32_MIN);
  const volatile double computed = std::nan("");  // as at run time
  EXPECT_EQ(UTtruncate(computed), 0);
}

}  // namespace zelvan
