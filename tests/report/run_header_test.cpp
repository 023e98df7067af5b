#include "report/run_header.h"

#include <gtest/gtest.h>

#include "support/capture.h"

namespace zelvan {

// Whole reports are too quick for figures that say anything.
TEST(PrintTimes2, TellsTheRatesOfTheScan) {
  RunTimes times;
  times[TIME_SCAN] = "    2.0     3.0     4.0     5.0";
  const std::string text = written([&](FILE* stream) { print_times2(stream, times, 100, 1'000'000); });
  EXPECT_EQ(count_of(text, "\n# Scan database:                       2.0     3.0     4.0     5.0\n"), 1)
      << text;
  EXPECT_EQ(count_of(text, "in scan (CPU):  50.00 (Elapsed):  25.00\n"), 1) << text;
}

}  // namespace zelvan
