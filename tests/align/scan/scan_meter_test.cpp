#include "align/scan/scan_meter.h"

#include <gtest/gtest.h>

namespace zelvan {

// The line on a terminal, and its absence elsewhere, is tried on the whole program.
TEST(ScanMeter, TellsPartRateAndTimeLeft) {
  EXPECT_EQ(meter_text(30e9, 120e9, 3), "Scanning:  25 %  10.0 GCUPS  9 s left");
  EXPECT_EQ(meter_text(1199e9, 1200e9, 40),
            "Scanning:  99 %  30.0 GCUPS  1 s left");  // not done before it is
  EXPECT_EQ(meter_text(0, 0, 0), "Scanning: 100 %  0.0 GCUPS");
}

}  // namespace zelvan
