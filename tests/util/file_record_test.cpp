#include "util/file_record.h"

#include <gtest/gtest.h>

#include "support/capture.h"

namespace {

using testing::ExitedWithCode;

TEST(FileRecord, IsOpenedOnRequestAndRenamedWithoutItsStream) {
  const TemporaryDirectory work;
  EXPECT_EQ(UTfilemake(work.at("missing").c_str(), "r", 1).stream, nullptr);
  FileRec file = UTfilemake(work.at("first").c_str(), "w", 1);
  std::fputs("flushed when it is renamed", file.stream);
  EXPECT_EQ(&UTfilerename(file, work.at("second").c_str()), &file);
  EXPECT_EQ(file.stream, nullptr);
  EXPECT_EQ(file_content(work.at("first")), "flushed when it is renamed");
  UTfileopen(file, "w", 1);
  std::fputs("other", file.stream);
  UTfileclose(file, 1);
  UTfilerename(file, "third");
  EXPECT_EQ(file_content(work.at("second")), "other");
}

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
