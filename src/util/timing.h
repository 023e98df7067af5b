// The stopwatch of the process: CPU time (own and finished children's) and elapsed time, each since the last
// reading and since the start, in seconds. There is one, kept here between calls, because the times of a
// process are one for all of it. Start it (UT_init_times) before the first reading.
#pragma once

#include <sys/times.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "util/memory.h"

namespace zelvan {

// The slots of a run's times, each a text made by UT_get_times(1).
enum RunTimeSlot : std::size_t {
  TIME_SETUP = 0,       // load matrix, query and index
  TIME_LOAD = 1,        // load database
  TIME_SCAN = 2,        // scan database
  TIME_SORT = 3,        // sorting
  TIME_SCORES = 4,      // output scores
  TIME_ALIGNMENTS = 5,  // generate and write alignments
};
using RunTimes = std::array<UTstring, 6>;

// The state of the stopwatch, in clock ticks: the CPU times of the process at start, at the last reading and
// now, and the clock at the same moments.
struct Stopwatch {
  bool running = false;
  tms t_init{}, t_last{}, t_new{};
  clock_t init_times = 0, last_times = 0, new_times = 0;
};

// UT_keep_times, UT_return_to_times - copy the state and restore it, so that the next reading covers a whole
// phase in which other readings were taken or the stopwatch was stopped.
Stopwatch UT_keep_times();
void UT_return_to_times(const Stopwatch& kept);

// UT_init_times - starts the stopwatch; does nothing when it runs already.
void UT_init_times();

// UT_reset_times - stops it; a later UT_init_times starts afresh.
void UT_reset_times();

// UT_get_times - takes a reading and returns it as text, "%7.1f" a figure.
// In     mode 0: elapsed since the last reading
//        mode 1: CPU since the last reading, since start, elapsed since the last reading, since start
//        mode 2: the sixteen figures of user, system, CPU, the same of the children, total CPU, elapsed; each
//        since the last reading, since start
//        mode 3: own, children's and total CPU, elapsed, since start
// Ends   never; a stopwatch that does not run is started first
UTstring UT_get_times(int32_t mode);

// UT_show_times - takes a reading and writes it in one of four layouts (0: elapsed; 1: one line; 2: a table;
// 3: cumulative).
void UT_show_times(FILE* stream, int32_t mode);

}  // namespace zelvan
