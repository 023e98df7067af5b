#include "util/timing.h"

#include <unistd.h>

namespace zelvan {
namespace {

Stopwatch watch;  // the one of the process

// Seconds of one quantity, since the last reading and since the start.
struct Span {
  float last = 0, start = 0;
};
Span operator+(const Span& a, const Span& b) {
  return {a.last + b.last, a.start + b.start};
}

struct Reading {
  Span user, system, cpu;                    // of the process; cpu: user + system
  Span child_user, child_system, child_cpu;  // of its finished children
  Span total;                                // both
  Span elapsed;
};

float seconds(clock_t from, clock_t to) {
  return static_cast<float>(to - from) / static_cast<float>(sysconf(_SC_CLK_TCK));
}

Reading take_reading() {
  UT_init_times();
  watch.new_times = times(&watch.t_new);
  const auto span = [](clock_t tms::*field) {
    return Span{seconds(watch.t_last.*field, watch.t_new.*field),
                seconds(watch.t_init.*field, watch.t_new.*field)};
  };
  Reading r;
  r.user = span(&tms::tms_utime);
  r.system = span(&tms::tms_stime);
  r.cpu = r.user + r.system;
  r.child_user = span(&tms::tms_cutime);
  r.child_system = span(&tms::tms_cstime);
  r.child_cpu = r.child_user + r.child_system;
  r.total = r.cpu + r.child_cpu;
  r.elapsed = {seconds(watch.last_times, watch.new_times), seconds(watch.init_times, watch.new_times)};
  watch.t_last = watch.t_new;
  watch.last_times = watch.new_times;
  return r;
}

UTstring figures(std::initializer_list<float> values) {
  UTstring text;
  char figure[64];
  for (float value : values) {
    std::snprintf(figure, sizeof figure, "%s%7.1f", text.empty() ? "" : " ", static_cast<double>(value));
    text += figure;
  }
  return text;
}

}  // namespace

Stopwatch UT_keep_times() {
  return watch;
}

void UT_return_to_times(const Stopwatch& kept) {
  watch = kept;
}

void UT_init_times() {
  if (watch.running) return;
  watch.init_times = times(&watch.t_init);
  watch.t_last = watch.t_new = watch.t_init;
  watch.last_times = watch.new_times = watch.init_times;
  watch.running = true;
}

void UT_reset_times() {
  watch = Stopwatch();
}

UTstring UT_get_times(int32_t mode) {
  const Reading r = take_reading();
  switch (mode) {
    case 0:
      return figures({r.elapsed.last});
    case 2:
      return figures({r.user.last, r.user.start, r.system.last, r.system.start, r.cpu.last, r.cpu.start,
                      r.child_user.last, r.child_user.start, r.child_system.last, r.child_system.start,
                      r.child_cpu.last, r.child_cpu.start, r.total.last, r.total.start, r.elapsed.last,
                      r.elapsed.start});
    case 3:
      return figures({r.cpu.start, r.child_cpu.start, r.total.start, r.elapsed.start});
    default:
      return figures({r.cpu.last, r.cpu.start, r.elapsed.last, r.elapsed.start});
  }
}

void UT_show_times(FILE* stream, int32_t mode) {
  const Reading r = take_reading();
  const auto wide = [](float value) { return static_cast<double>(value); };
  switch (mode) {
    case 0:
      std::fprintf(stream, "Elapsed time: %6.2f\n", wide(r.elapsed.last));
      break;
    case 1:
      std::fprintf(stream, "CPU(P%7.1f%7.1f)(C%7.1f%7.1f)(T%7.1f%7.1f)(E%7.1f%7.1f)\n", wide(r.cpu.last),
                   wide(r.cpu.start), wide(r.child_cpu.last), wide(r.child_cpu.start), wide(r.total.last),
                   wide(r.total.start), wide(r.elapsed.last), wide(r.elapsed.start));
      break;
    case 2:
      std::fprintf(stream, "         %7s:%7s:%7s|%7s:%7s:%7s:%7s:%7s\n", "user", "sys", "total", "c user",
                   "c sys", "ctotal", "el/tcpu", "cum");
      std::fprintf(stream, "Master  :%7.1f:%7.1f:%7.1f|%7.1f:%7.1f:%7.1f|%7.1f:%7.1f\n", wide(r.user.last),
                   wide(r.system.last), wide(r.cpu.last), wide(r.user.start), wide(r.system.start),
                   wide(r.cpu.start), wide(r.elapsed.last), wide(r.elapsed.start));
      std::fprintf(stream, "Children:%7.1f:%7.1f:%7.1f|%7.1f:%7.1f:%7.1f|%7.1f:%7.1f\n",
                   wide(r.child_user.last), wide(r.child_system.last), wide(r.child_cpu.last),
                   wide(r.child_user.start), wide(r.child_system.start), wide(r.child_cpu.start),
                   wide(r.total.last), wide(r.total.start));
      break;
    case 3:
      std::fprintf(stream, "Cum CPU Time: Parent: %7.1f Child: %7.1f Total: %7.1f Elapsed: %7.1f\n",
                   wide(r.cpu.start), wide(r.child_cpu.start), wide(r.total.start), wide(r.elapsed.start));
      break;
    default:
      break;
  }
}

}  // namespace zelvan
