#include "util/failure.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "support/capture.h"

namespace {

using testing::ExitedWithCode;

TEST(Failure, ReportsMessageAndSystemText) {
  const auto told = reported([] {
    errno = ENOENT;
    UTerror("100%s");
    errno = ENOENT;
    UTerror("");
  });
  EXPECT_EQ(told, "100%s: No such file or directory\nNo such file or directory\n");
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
