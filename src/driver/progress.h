// What a run tells about itself on std_err while it works.
#pragma once

#include "driver/params.h"

namespace zelvan {

// progress - a line of progress, newline included by the caller; only when VERBOSE is not zero.
void progress(const char* text, const Params* p);

// show_time - a label and a reading of the stopwatch; only when TIME is above 5.
void show_time(const char* label, const Params* p);

}  // namespace zelvan
