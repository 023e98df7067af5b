#include "driver/progress.h"

#include "util/streams.h"
#include "util/timing.h"

namespace zelvan {

void progress(const char* text, const Params* p) {
  if (p->VERBOSE != 0) std::fputs(text, std_err);
}

void show_time(const char* label, const Params* p) {
  if (p->TIME <= 5) return;
  std::fputs(label, std_err);
  UT_show_times(std_err, 1);
}

}  // namespace zelvan
