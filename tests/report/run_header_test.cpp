#include "report/run_header.h"

#include <gtest/gtest.h>

#include "report/report_data.h"
#include "seq/database_info.h"
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
  const std::string large = written([&](FILE* stream) { print_times2(stream, times, 100, 5'000'000'000); });
  EXPECT_EQ(count_of(large, "in scan (CPU): 250000.00 (Elapsed): 125000.00\n"), 1) << large;
}

TEST(DumpInfo, TellsResiduesBeyond32Bits) {
  Params p = params_of("PRECISION 100");
  BdbInfo info;
  info.nres = 5'000'000'000;
  p.binfo = &info;
  const SeqRec query = reported_sequence("q", "t", "A");
  const std::string text =
      written([&](FILE* stream) { dump_info(stream, query, report_matrix(), nullptr, &p); });
  EXPECT_EQ(count_of(text, "# Number of residues/bases in database: 5000000000\n"), 1) << text;
}

}  // namespace zelvan
