#include "util/file_record.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/capture.h"

namespace zelvan {
namespace {

using testing::ExitedWithCode;

// What a file that must open says stands in the tests of the commands.
TEST(FileRecordDeathTest, FailuresAreLeftToTheCallerUnlessTheyMustNotHappen) {
  const TemporaryDirectory work;
  FileRec absent = UTfilemake(work.at("missing").c_str(), "r", 0);
  EXPECT_EQ(reported([&] { EXPECT_EQ(UTfileopen(absent, "r", 0).stream, nullptr); }), "");
  EXPECT_EQ(UTfopen(work.path.c_str(), "r", 0), nullptr) << "a directory is no readable file";
  if (access("/dev/full", F_OK) != 0) GTEST_SKIP() << "no disk is always full here";
  const auto full = [] {
    FileRec file = UTfilemake("/dev/full", "w", 1);
    std::fputs("lost", file.stream);
    return file;
  };
  EXPECT_NE(UTfclose(full().stream, 0), 0);
  EXPECT_EXIT(UTfclose(full().stream, 1), ExitedWithCode(1),
              "^Error closing File: No space left on device\n$");
  const auto lost_before = [] {  // the flush at the end finds nothing left to write
    const FileRec file = UTfilemake("/dev/full", "w", 1);
    std::setvbuf(file.stream, nullptr, _IONBF, 0);
    std::fputs("lost", file.stream);
    UTfilewritten(file);
  };
  EXPECT_EXIT(lost_before(), ExitedWithCode(1), "^Error writing File: .*\nFile: /dev/full is incomplete: ");
  const auto close_record = [&] {
    FileRec record = full();
    UTfileclose(record, 1);
  };
  EXPECT_EXIT(close_record(), ExitedWithCode(255),
              "^Error closing File: No space left on device\n/dev/full\n$");
}

}  // namespace
}  // namespace zelvan
