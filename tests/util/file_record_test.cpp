#include "util/file_record.h"

#include <gtest/gtest.h>

#include "support/capture.h"

namespace {

using testing::ExitedWithCode;

TEST(FileRecordDeathTest, FailuresAreLeftToTheCallerUnlessTheyMustNotHappen) {
  const TemporaryDirectory work;
  const std::string missing = work.at("missing");
  FileRec absent = UTfilemake(missing.c_str(), "r", 0);
  FileRec directory = UTfilemake(work.path.c_str(), "r", 0);
  EXPECT_EQ(reported([&] { EXPECT_EQ(UTfileopen(absent, "r", 0).stream, nullptr); }), "");
  EXPECT_EQ(UTfopen(work.path.c_str(), "r", 0), nullptr) << "a directory is no readable file";
  // Streams end the run with 1, records with -1.
  EXPECT_EXIT(UTfopen(missing.c_str(), "r", 1), ExitedWithCode(1),
              "^Cannot Open File: " + missing + ": No such file or directory\n$");
  EXPECT_EXIT(UTfileopen(absent, "r", 1), ExitedWithCode(255),
              "^Error opening File: No such file or directory\n" + missing + "\n$");
  EXPECT_EXIT(UTfileopen(directory, "r", 1), ExitedWithCode(255), "^Error opening File: Is a directory\n");
  const auto full = [] {
    FileRec file = UTfilemake("/dev/full", "w", 1);
    std::fputs("lost", file.stream);
    return file;
  };
  EXPECT_NE(UTfclose(full().stream, 0), 0);
  EXPECT_EXIT(UTfclose(full().stream, 1), ExitedWithCode(1),
              "^Error closing File: No space left on device\n$");
  const auto close_record = [&] {
    FileRec record = full();
    UTfileclose(record, 1);
  };
  EXPECT_EXIT(close_record(), ExitedWithCode(255),
              "^Error closing File: No space left on device\n/dev/full\n$");
}

}  // namespace
