// The ground that every fuzz target stands on. The routines under test run inside the fuzzer's process: where the
// program would end they come back, they can open nothing but the files of their target, and what they print goes
// nowhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>

#include "driver/params.h"
#include "seq/matrix.h"
#include "support/capture.h"

namespace zelvan {

using FuzzInput = std::string_view;

// What is read from the input, and what must hold whatever it is.
using FuzzTarget = void (*)(FuzzInput);

// The targets by their names: the readers of files, scans and searches.
using FuzzTargets = std::map<std::string, FuzzTarget>;
const FuzzTargets& reader_targets();
const FuzzTargets& search_targets();

// find_target - ends the program when there is none of that name.
FuzzTarget find_target(const std::string& name);

// run_target - runs one input, confined as told above; closes all streams, forgets the files and resets the global
// state.
void run_target(FuzzTarget target, FuzzInput input);

// scratch_file - makes a file that the routines under test may open, until the end of the case; returns its path.
std::string scratch_file(const char* name, std::string_view content);

// scratch - where those files lie. Writing there is allowed, too; every other file that is opened for writing is the
// null device, and every other one for reading is missing.
const TemporaryDirectory& scratch();

// require - a property that must hold; a broken one is a finding.
void require(bool holds, const char* what);

// A record with every key at its default, quiet streams and the shipped data.
const Params& default_params();

// A matrix that was read from the shipped data once, ready for use.
const ScoreMatrix& shipped_matrix();

// The input as a source of choices; when it is used up, every choice is the lowest.
struct Choices {
  FuzzInput left;
  int32_t number(int32_t low, int32_t high);  // low <= high
};

// Thrown in place of the end of the process.
struct RunEnd {
  int status;
};

// came_back - runs a routine; false when it ended the run with one of the statuses that there are.
template <class Run>
bool came_back(Run run) {
  try {
    run();
    return true;
  } catch (const RunEnd& end) {
    require(end.status == -1 || end.status == 0 || end.status == 1, "an exit status that there is");
    return false;
  }
}

}  // namespace zelvan
