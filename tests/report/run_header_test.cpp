#include "report/run_header.h"

#include <gtest/gtest.h>

#include "support/capture.h"

namespace {

// What a header says stands in the manual, for every mode.
TEST(PrintTimes2, ShowsTheRatesOfTheScan) {
  const std::tuple<const char*, int32_t, const char*> cases[] = {
      {"    2.0     3.0     4.0     5.0", 100000, "(CPU): 100.00 (Elapsed):  50.00\n"},
      {"    0.0     3.0     0.0     5.0", 100000, "(CPU):    inf (Elapsed):    inf\n"},
      {"    0.0     3.0     0.0     5.0", 0, "(CPU):   0.00 (Elapsed):   0.00\n"},
      {"", 100000, "(CPU):   0.00 (Elapsed):   0.00\n"},
  };
  for (const auto& [scan, query_length, rates] : cases) {
    RunTimes times;
    times[TIME_SCAN] = scan;
    const std::string report =
        written([&](FILE* stream) { print_times2(stream, times, query_length, 2000); });
    EXPECT_TRUE(report.ends_with(rates)) << report;
  }
}

}  // namespace
