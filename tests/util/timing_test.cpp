#include "util/timing.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <regex>
#include <sstream>
#include <thread>
#include <vector>

#include "support/capture.h"

namespace {

std::vector<double> numbers(const std::string& text) {
  std::istringstream stream(std::regex_replace(text, std::regex("[^-0-9.]+"), " "));
  std::vector<double> values;
  for (double value; stream >> value;) values.push_back(value);
  return values;
}

void burn(double seconds) {
  const clock_t end = clock() + static_cast<clock_t>(seconds * CLOCKS_PER_SEC);
  while (clock() < end) {
  }
}

TEST(Timing, MeasuresSinceTheLastReadingAndSinceTheStart) {
  UT_reset_times();
  UT_init_times();
  burn(0.3);
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  UT_init_times();  // no effect while it runs
  const std::vector<double> first = numbers(UT_get_times(1).c_str());
  ASSERT_EQ(first.size(), 4U);
  EXPECT_GE(first[0], 0.2);
  EXPECT_GE(first[2], 0.5);
  EXPECT_GE(first[2], first[0] + 0.2) << "sleeping takes no processor time";
  EXPECT_EQ(first[1], first[0]);
  EXPECT_EQ(first[3], first[2]);
  const Stopwatch kept = UT_keep_times();
  burn(0.2);
  const std::vector<double> second = numbers(UT_get_times(1).c_str());
  EXPECT_LT(second[0], first[0] + 0.2);
  EXPECT_NEAR(second[1], first[1] + second[0], 0.11);
  EXPECT_NEAR(second[3], first[3] + second[2], 0.11);
  burn(0.2);
  UT_return_to_times(kept);
  EXPECT_GE(numbers(UT_get_times(1).c_str())[0], 0.3) << "both phases, though read in between";
  UT_reset_times();
  EXPECT_EQ(UT_get_times(0), "    0.0") << "started afresh by the reading";
}

TEST(Timing, LaysItsFiguresOutInFixedColumns) {
  UT_reset_times();
  UT_init_times();
  const auto all_match = [](const std::string& text, const char* pattern) {
    EXPECT_TRUE(std::regex_match(text, std::regex(pattern))) << text;
  };
  const auto shown = [](int32_t mode) { return written([&](FILE* stream) { UT_show_times(stream, mode); }); };
  all_match(UT_get_times(0).c_str(), " {4}\\d\\.\\d");
  all_match(UT_get_times(1).c_str(), "( {4}\\d\\.\\d ){3} {4}\\d\\.\\d");
  all_match(UT_get_times(2).c_str(), "( {4}\\d\\.\\d ){15} {4}\\d\\.\\d");
  all_match(UT_get_times(3).c_str(), "( {4}\\d\\.\\d ){3} {4}\\d\\.\\d");
  all_match(shown(0), "Elapsed time:   \\d\\.\\d\\d\n");
  all_match(shown(1), "CPU(\\([PCTE]( {4}\\d\\.\\d){2}\\)){4}\n");
  const std::string row =
      ":( {4}\\d\\.\\d:){2} {4}\\d\\.\\d\\|( {4}\\d\\.\\d:){2} {4}\\d\\.\\d\\|"
      " {4}\\d\\.\\d: {4}\\d\\.\\d\n";
  const std::string heading = "            user:    sys:  total\\| c user:  c sys: ctotal:el/tcpu:    cum\n";
  all_match(shown(2), (heading + "Master  " + row + "Children" + row).c_str());
  all_match(shown(3),
            "Cum CPU Time: Parent: {5}\\d\\.\\d Child: {5}\\d\\.\\d Total: {5}\\d\\.\\d "
            "Elapsed: {5}\\d\\.\\d\n");
}

}  // namespace
