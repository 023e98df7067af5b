#include "align/scan_meter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "util/streams.h"

namespace {

using std::chrono::milliseconds;

// std_err as a terminal whose other end can be read.
class Terminal {
 public:
  Terminal() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
    grantpt(master_);
    unlockpt(master_);
    usual_ = std_err;
    std_err = std::fopen(ptsname(master_), "w");
    fcntl(master_, F_SETFL, O_NONBLOCK);
  }
  ~Terminal() {
    std::fclose(std_err);
    std_err = usual_;
    close(master_);
  }
  std::string shown() const {
    char text[512];
    const ssize_t length = read(master_, text, sizeof text);
    return {text, length > 0 ? static_cast<std::size_t>(length) : 0};
  }

 private:
  int master_;
  FILE* usual_;
};

TEST(ScanMeter, TellsPartRateAndTimeLeft) {
  EXPECT_EQ(meter_text(1199e9, 1200e9, 40),
            "Scanning:  99 %  30.0 GCUPS  1 s left");  // not done before it is
  EXPECT_EQ(meter_text(0, 0, 0), "Scanning: 100 %  0.0 GCUPS");
}

TEST(ScanMeter, OverwritesItsLineAndLeavesNothing) {
  const Terminal terminal;
  Params p{};
  p.VERBOSE = 1;
  SeqRec seqs[2];
  seqs[0].len = 1'000'000'002;
  seqs[1].len = 1'000'000'002;
  ScanMeter meter = start_scan_meter(10, seqs, 2, &p);
  scanned(meter, seqs[0]);
  show_scan_meter(meter, meter.start + milliseconds(1999));
  EXPECT_EQ(terminal.shown(), "");
  show_scan_meter(meter, meter.start + milliseconds(2000));
  EXPECT_EQ(terminal.shown(), "\rScanning:  50 %  5.0 GCUPS  2 s left");
  scan_again(meter, seqs[0]);
  show_scan_meter(meter, meter.start + milliseconds(2199));
  EXPECT_EQ(terminal.shown(), "");
  show_scan_meter(meter, meter.start + milliseconds(25000));
  EXPECT_EQ(terminal.shown(), "\rScanning:  33 %  0.4 GCUPS  50 s left");
  scanned(meter, seqs[1]);
  scanned(meter, seqs[0]);
  show_scan_meter(meter, meter.start + milliseconds(30000));
  EXPECT_EQ(terminal.shown(), "\rScanning: 100 %  1.0 GCUPS  0 s left ");
  end_scan_meter(meter);
  EXPECT_EQ(terminal.shown(), "\r" + std::string(36, ' ') + "\r");
}

}  // namespace
