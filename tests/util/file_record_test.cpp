#include "util/file_record.h"

#include <gtest/gtest.h>

#include <ctime>

#include "support/capture.h"

namespace {

using testing::ExitedWithCode;

TEST(FileRecord, IsMadeOpenOrClosed) {
  const TemporaryDirectory work;
  const std::string path = work.file("a.seq", "text");
  EXPECT_EQ(UTfilemake(path.c_str(), "r", 0).stream, nullptr);
  EXPECT_EQ(UTfilemake(path.c_str(), "r", 2).stream, nullptr);
  EXPECT_EQ(UTfilemake(work.at("missing").c_str(), "r", 1).stream, nullptr);
  FileRec open = UTfilemake(path.c_str(), "r", 1);
  EXPECT_STREQ(open.name.c_str(), path.c_str());
  ASSERT_NE(open.stream, nullptr);
  EXPECT_EQ(std::getc(open.stream), 't');
  EXPECT_EQ(&UTfileclose(open, 1), &open);
}

TEST(FileRecord, GetsANewNameWithoutAStream) {
  const TemporaryDirectory work;
  FileRec file = UTfilemake(work.at("first").c_str(), "w", 1);
  ASSERT_NE(file.stream, nullptr);
  std::fputs("flushed when it is renamed", file.stream);
  EXPECT_EQ(&UTfilerename(file, work.at("second").c_str()), &file);
  EXPECT_EQ(file.stream, nullptr);
  EXPECT_EQ(file_content(work.at("first")), "flushed when it is renamed");
  EXPECT_FALSE(std::filesystem::exists(work.at("second")));
  UTfileopen(file, "w", 1);
  std::fputs("other", file.stream);
  UTfileclose(file, 1);
  UTfilerename(file, "third");
  EXPECT_EQ(file_content(work.at("second")), "other");
}

TEST(FileRecord, FailuresAreLeftToTheCallerUnlessTheyMustNotHappen) {
  const TemporaryDirectory work;
  FileRec file = UTfilemake(work.at("missing").c_str(), "r", 0);
  EXPECT_EQ(reported([&] { EXPECT_EQ(UTfileopen(file, "r", 0).stream, nullptr); }), "");
  EXPECT_EQ(UTfopen(work.path.c_str(), "r", 0), nullptr) << "a directory is no readable file";
  FILE* full = UTfopen("/dev/full", "w", 1);
  std::fputs("lost", full);
  EXPECT_NE(UTfclose(full, 0), 0);
}

TEST(FileRecordDeathTest, StreamsEndWithOneAndRecordsWithMinusOne) {
  const TemporaryDirectory work;
  const std::string missing = work.at("missing");
  FileRec absent = UTfilemake(missing.c_str(), "r", 0);
  FileRec directory = UTfilemake(work.path.c_str(), "r", 0);
  EXPECT_EXIT(UTfopen(missing.c_str(), "r", 1), ExitedWithCode(1),
              "^Cannot Open File: " + missing + ": No such file or directory\n$");
  EXPECT_EXIT(UTfileopen(absent, "r", 1), ExitedWithCode(255),
              "^Error opening File: No such file or directory\n" + missing + "\n$");
  EXPECT_EXIT(UTfileopen(directory, "r", 1), ExitedWithCode(255), "^Error opening File: Is a directory\n");
  const auto close_full = [](bool as_record) {
    FileRec full = UTfilemake("/dev/full", "w", 1);
    std::fputs("lost", full.stream);
    if (as_record) UTfileclose(full, 1);
    UTfclose(full.stream, 1);
  };
  EXPECT_EXIT(close_full(false), ExitedWithCode(1), "^Error closing File: No space left on device\n$");
  EXPECT_EXIT(close_full(true), ExitedWithCode(255),
              "^Error closing File: No space left on device\n/dev/full\n$");
}

TEST(FileRecord, TellsTheLocalTime) {
  const std::string text = UTlocaltime();
  std::tm parsed{};
  const char* end = strptime(text.c_str(), "%a %b %d %H:%M:%S %Y", &parsed);
  ASSERT_NE(end, nullptr) << text;
  EXPECT_STREQ(end, "\n");
  parsed.tm_isdst = -1;
  EXPECT_NEAR(std::difftime(std::mktime(&parsed), std::time(nullptr)), 0, 5);
}

}  // namespace
