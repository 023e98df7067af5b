#include "align/scan/scan_meter.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "util/streams.h"

namespace zelvan {
namespace {

constexpr std::chrono::milliseconds QUIET{2000};
constexpr std::chrono::milliseconds BETWEEN{200};

double cells(const ScanMeter& meter, const SeqRec& s) {
  return static_cast<double>(meter.positions) * std::max(0, residues(s));
}

// Goes back to the start of the line and writes `text` over what stands there.
void overwrite(ScanMeter& meter, const UTstring& text) {
  const std::size_t wiped = std::max(meter.width, text.size());
  std::fprintf(std_err, "\r%-*s", static_cast<int>(wiped), text.c_str());
  if (text.empty()) std::fputc('\r', std_err);
  std::fflush(std_err);
  meter.width = text.size();
}

}  // namespace

ScanMeter start_scan_meter(int32_t positions, const SeqRec* seqs, int32_t n, const Params* p) {
  ScanMeter meter;
  meter.wanted = p->VERBOSE != 0 && isatty(fileno(std_err)) != 0;
  if (!meter.wanted) return meter;
  meter.positions = positions;
  for (int32_t k = 0; k < n; ++k) meter.total += cells(meter, seqs[k]);
  meter.start = meter.last_shown = std::chrono::steady_clock::now();
  return meter;
}

void scanned(ScanMeter& meter, const SeqRec& s) {
  meter.done += cells(meter, s);
}

void scan_again(ScanMeter& meter, const SeqRec& s) {
  meter.total += cells(meter, s);
}

void show_scan_meter(ScanMeter& meter, MeterTime now) {
  if (!meter.wanted || now - meter.start < QUIET || now - meter.last_shown < BETWEEN) return;
  meter.last_shown = now;
  overwrite(meter,
            meter_text(meter.done, meter.total, std::chrono::duration<double>(now - meter.start).count()));
}

void end_scan_meter(ScanMeter& meter) {
  if (meter.width > 0) overwrite(meter, "");
}

UTstring meter_text(double done, double total, double seconds) {
  const double rate = seconds > 0 ? done / seconds : 0;
  char text[96];
  int length = std::snprintf(text, sizeof text, "Scanning: %3.0f %%  %.1f GCUPS",
                             total > 0 ? std::floor(100 * done / total) : 100.0, rate / 1e9);
  UTstring line(text, static_cast<std::size_t>(length));
  if (rate > 0) {
    length = std::snprintf(text, sizeof text, "  %.0f s left", std::ceil((total - done) / rate));
    line.append(text, static_cast<std::size_t>(length));
  }
  return line;
}

}  // namespace zelvan
