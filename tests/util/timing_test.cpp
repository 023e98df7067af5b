#include "util/timing.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <vector>

#include "support/capture.h"

namespace zelvan {
namespace {

// A stopwatch that shows these figures, and what little time has passed since: user, system, children's user
// and system, elapsed; each since the last reading and since the start.
void set_stopwatch() {
  UT_reset_times();
  UT_init_times();
  Stopwatch watch = UT_keep_times();
  const clock_t hundred = 100 * sysconf(_SC_CLK_TCK);
  const auto add = [hundred](tms& record, int user, int system, int child_user, int child_system) {
    record.tms_utime -= user * hundred;
    record.tms_stime -= system * hundred;
    record.tms_cutime -= child_user * hundred;
    record.tms_cstime -= child_system * hundred;
  };
  add(watch.t_last, 1, 3, 5, 7);
  add(watch.t_init, 10, 20, 33, 17);
  watch.last_times -= 9 * hundred;
  watch.init_times -= 95 * hundred;
  UT_return_to_times(watch);
}

// The figures of a text, in hundreds of seconds.
std::vector<long> hundreds(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return !(c >= '0' && c <= '9') && c != '.'; }, ' ');
  std::istringstream stream(text);
  std::vector<long> values;
  for (double value; stream >> value;) values.push_back(std::lround(value / 100));
  return values;
}

std::string shown(int32_t mode) {
  return written([mode](FILE* stream) { UT_show_times(stream, mode); });
}

TEST(Timing, EachModeShowsItsFigures) {
  using Figures = std::vector<long>;
  const Figures all = {1, 10, 3, 20, 4, 30, 5, 33, 7, 17, 12, 50, 16, 80, 9, 95};
  const struct {
    int32_t mode;
    Figures text, shown;
  } cases[] = {{0, {9}, {9}},
               {1, {4, 30, 9, 95}, {4, 30, 12, 50, 16, 80, 9, 95}},
               {2, all, {1, 3, 4, 10, 20, 30, 9, 95, 5, 7, 12, 33, 17, 50, 16, 80}},
               {3, {30, 50, 80, 95}, {30, 50, 80, 95}}};
  for (const auto& c : cases) {
    set_stopwatch();
    EXPECT_EQ(hundreds(UT_get_times(c.mode).c_str()), c.text) << c.mode;
    set_stopwatch();
    EXPECT_EQ(hundreds(shown(c.mode)), c.shown) << c.mode;
  }
}

TEST(Timing, EveryReadingIsTheLastOneOfTheNext) {
  set_stopwatch();
  const Stopwatch kept = UT_keep_times();
  UT_init_times();  // it runs already
  shown(0);
  EXPECT_EQ(hundreds(UT_get_times(1).c_str()), (std::vector<long>{0, 30, 0, 95}));
  UT_return_to_times(kept);
  EXPECT_EQ(hundreds(UT_get_times(1).c_str()), (std::vector<long>{4, 30, 9, 95}));
}

// As reports and messages show them.
TEST(Timing, LaysItsFiguresOutInFixedColumns) {
  set_stopwatch();
  const auto layout = [](std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '9');
    return text;
  };
  EXPECT_EQ(layout(UT_get_times(1).c_str()), "  999.9  9999.9   999.9  9999.9");
  set_stopwatch();
  EXPECT_EQ(layout(shown(1)), "CPU(P  999.9 9999.9)(C 9999.9 9999.9)(T 9999.9 9999.9)(E  999.9 9999.9)\n");
}

}  // namespace
}  // namespace zelvan
