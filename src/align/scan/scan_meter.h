// How far a long scan is: one line on std_err that overwrites itself and is gone when the scan ends.
#pragma once

#include <chrono>
#include <cstdint>

#include "driver/params.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

using MeterTime = std::chrono::steady_clock::time_point;

struct ScanMeter {
  bool wanted = false;  // otherwise nothing is ever written
  int32_t positions = 0;
  double done = 0;   // cells
  double total = 0;  // cells asked for so far: sequences that are scanned again come on top
  MeterTime start{}, last_shown{};
  std::size_t width = 0;  // of the line that stands on the terminal
};

// start_scan_meter - a meter for n sequences against so many query positions: a silent one when VERBOSE is 0
// or std_err is no terminal, so that nothing of it reaches a file or a pipe.
ScanMeter start_scan_meter(int32_t positions, const SeqRec* seqs, int32_t n, const Params* p);

// scanned, scan_again - the sequence has its score; it needs another pass with wider lanes.
void scanned(ScanMeter& meter, const SeqRec& s);
void scan_again(ScanMeter& meter, const SeqRec& s);

// show_scan_meter - writes the line at the given time when that is 2 seconds after the start or later, and
// 0.2 seconds after the last line.
void show_scan_meter(ScanMeter& meter, MeterTime now = std::chrono::steady_clock::now());

// end_scan_meter - wipes the line.
void end_scan_meter(ScanMeter& meter);

// meter_text - the line: part of the cells done, billions of cells per second, seconds left at that rate.
UTstring meter_text(double done, double total, double seconds);

}  // namespace zelvan
