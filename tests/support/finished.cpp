// A test program that ends before its tests do has failed, whatever status it ends with: some failure routines of
// the code under test end the process with status 0.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace zelvan {
namespace {

pid_t unfinished = 0;  // the process whose tests are running; death tests run in others, which may end

void fail_unless_finished() {
  if (unfinished != getpid()) return;
  std::fputs("The program ended in the middle of a test\n", stderr);
  std::fflush(nullptr);
  std::_Exit(EXIT_FAILURE);
}

class Watch : public testing::EmptyTestEventListener {
  void OnTestProgramStart(const testing::UnitTest&) override { unfinished = getpid(); }
  void OnTestProgramEnd(const testing::UnitTest&) override { unfinished = 0; }
};

const bool watching = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new Watch);
  return std::atexit(fail_unless_finished) == 0;
}();

}  // namespace
}  // namespace zelvan
