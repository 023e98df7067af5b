#include "util/failure.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "support/capture.h"

namespace {

using testing::ExitedWithCode;

TEST(Failure, ReportsMessageAndSystemText) {
  const auto report = [](const char* message, void (*tell)(const char*)) {
    return reported([&] {
      errno = ENOENT;
      tell(message);
    });
  };
  EXPECT_EQ(report("Error opening File", UTerror), "Error opening File: No such file or directory\n");
  EXPECT_EQ(report("", UTerror), "No such file or directory\n");
  EXPECT_EQ(report("100%s", UTerror), "100%s: No such file or directory\n");
  const auto only_told = [](const char* message) { error(message, 0); };
  EXPECT_EQ(report("only told", only_told), "only told: No such file or directory\n");
}

TEST(FailureDeathTest, EveryFamilyHasItsStatus) {
  EXPECT_EXIT((errno = EINVAL, error("told, then ended", 1)), ExitedWithCode(0),
              "^told, then ended: Invalid argument\n$");
  EXPECT_EXIT(UTend_input(stderr, "line %d of %s\n", 3, "x"), ExitedWithCode(255), "^line 3 of x\n$");
  EXPECT_EXIT(UTend_stream(stderr, "%s", ""), ExitedWithCode(1), "^$");
  EXPECT_EXIT(UTend_fault(stderr, "gone\n"), ExitedWithCode(0), "^gone\n$");
  EXPECT_EXIT(UTend_memory("malloc error"), ExitedWithCode(0), "^malloc error: ");
}

}  // namespace
