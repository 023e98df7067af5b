// The ground that every fuzz target stands on. The routines under test run inside the fuzzer's process: where the
// program would end they come back (failure.cpp), they can open nothing but the files of their target, and what
// they print goes nowhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "driver/params.h"
#include "seq/matrix.h"

// Thrown in place of the end of the process.
struct RunEnd {
  int status;
};

// begin_case, end_case - what stands between them is confined as told above and quiet; the end closes all streams,
// forgets the files and resets the global state.
void begin_case();
void end_case();

// scratch_file - makes a file that the routines under test may open, until the end of the case; returns its path.
std::string scratch_file(const char* name, std::string_view content);

// scratch_directory - where scratch files lie. Writing there is allowed, too; every other file that is opened for
// writing is the null device, and every other one for reading is missing.
const std::string& scratch_directory();

// shipped_file - the path of a file of the source tree's data directory, which may be read.
std::string shipped_file(const char* name);

// came_back - runs a routine; false when it ended the run with one of the statuses that there are.
template <class Run>
bool came_back(Run run);

// require - a property that must hold; a broken one is a finding.
void require(bool holds, const char* what);

// A record with every key at its default and quiet streams; keys can be set by their names.
Params default_params();
void set_key(Params& p, const char* key, const std::string& value);

// A matrix that was read from the shipped data once, ready for use.
const ScoreMatrix& shipped_matrix(const Params& p);

// The input as a source of choices; when it is used up, every choice is the lowest.
struct Choices {
  const uint8_t* at;
  const uint8_t* end;
  int32_t number(int32_t low, int32_t high);  // low <= high
  std::string_view rest() const {
    return {reinterpret_cast<const char*>(at), static_cast<std::size_t>(end - at)};
  }
};

void require_status(int status);

template <class Run>
bool came_back(Run run) {
  try {
    run();
    return true;
  } catch (const RunEnd& end) {
    require_status(end.status);
    return false;
  }
}
