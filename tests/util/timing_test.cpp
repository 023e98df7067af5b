#include "util/timing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <sstream>
#include <thread>
#include <vector>

#include "support/capture.h"

namespace zelvan {
namespace {

std::vector<double> numbers(const UTstring& text) {
  std::istringstream stream(text.c_str());
  std::vector<double> values;
  for (double value; stream >> value;) values.push_back(value);
  return values;
}

// A text with every digit as 9: the layout, whatever the figures.
std::string layout(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '9');
  return text;
}

// Four figures: processor and elapsed seconds, each since the last reading and since the start.
TEST(Timing, MeasuresSinceTheLastReadingAndSinceTheStart) {
  const auto sleep_and_read = [] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    return numbers(UT_get_times(1));
  };
  UT_reset_times();
  UT_init_times();
  const std::vector<double> first = sleep_and_read();
  ASSERT_EQ(first.size(), 4U);
  EXPECT_GE(first[2], first[0] + 0.2) << "sleeping takes no processor time";
  const Stopwatch kept = UT_keep_times();
  const std::vector<double> second = sleep_and_read();
  EXPECT_NEAR(second[1], first[1] + second[0], 0.11);
  EXPECT_NEAR(second[3], first[3] + second[2], 0.11);
  UT_return_to_times(kept);
  EXPECT_GE(numbers(UT_get_times(1))[2], second[2]) << "as if it had not been read in between";
}

// As reports and messages show them.
TEST(Timing, LaysItsFiguresOutInFixedColumns) {
  UT_reset_times();
  UT_init_times();
  const std::string one = "    9.9", two = one + one + ")";
  EXPECT_EQ(layout(UT_get_times(1).c_str()), one + " " + one + " " + one + " " + one);
  EXPECT_EQ(layout(written([](FILE* stream) { UT_show_times(stream, 1); })),
            "CPU(P" + two + "(C" + two + "(T" + two + "(E" + two + "\n");
}

}  // namespace
}  // namespace zelvan
