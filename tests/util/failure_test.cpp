#include "util/failure.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "support/capture.h"

namespace {

using testing::ExitedWithCode;

TEST(Failure, ReportsMessageAndSystemText) {
  const auto report = [](const char* message) {
    return reported([&] {
      errno = ENOENT;
      UTerror(message);
    });
  };
  EXPECT_EQ(report("Error opening File"), "Error opening File: No such file or directory\n");
  EXPECT_EQ(report(""), "No such file or directory\n");
  EXPECT_EQ(report("100%s"), "100%s: No such file or directory\n");
  EXPECT_EQ(reported([] {
              errno = 0;
              error("only told", 0);
            }),
            "only told: Success\n");
}

TEST(FailureDeathTest, EveryFamilyHasItsStatus) {
  const auto fatal = [] {
    errno = EINVAL;
    error("told, then ended", 1);
  };
  EXPECT_EXIT(fatal(), ExitedWithCode(0), "^told, then ended: Invalid argument\n$");
  EXPECT_EXIT(UTend_input(stderr, "line %d of %s\n", 3, "x"), ExitedWithCode(255), "^line 3 of x\n$");
  EXPECT_EXIT(UTend_stream(stderr, "%s", ""), ExitedWithCode(1), "^$");
  EXPECT_EXIT(UTend_fault(stderr, "gone\n"), ExitedWithCode(0), "^gone\n$");
  EXPECT_EXIT(UTend_memory("malloc error"), ExitedWithCode(0), "^malloc error: ");
}

}  // namespace
