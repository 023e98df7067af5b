#include "bdb/builder.h"

#include <algorithm>

#include "bdb_data.h"

namespace {

using Builder = BinaryDatabaseTest;

// The files, their order and full disks are tried on the whole program, against an independent writer.
TEST_F(Builder, LeavesNothingWhereItCannotStore) {
  for (UTstring* name : {&p.BDB_INDEX_FILE.name, &p.BDB_SEQ_FILE.name}) {
    const UTstring kept = *name;
    for (const char* wrong : {"/no/such/place", "/tmp"}) {
      *name = wrong;
      EXPECT_EXIT(build(">a\nAA\n"), testing::ExitedWithCode(255),
                  std::string("Error opening File: .*\n") + wrong + "\n");
      EXPECT_EQ(std::distance(std::filesystem::directory_iterator(work.path), {}), 1) << "the text only";
    }
    *name = kept;
  }
}

TEST_F(Builder, TellsItsProgressAndTimes) {
  const auto messages = [&](int32_t verbose, int32_t time) {
    p.VERBOSE = verbose;
    p.TIME = time;
    return reported([&] { build(">A a\nAC\n"); });
  };
  p.APPLY_INDEX = 1;
  EXPECT_EQ(messages(0, 0), "Getting matrix\n");
  EXPECT_EQ(messages(0, 6), "Getting matrix\n");
  const std::string timed = messages(0, 1);
  EXPECT_TRUE(timed.starts_with("Getting matrix\nHave read database\nCPU(")) << timed;
  EXPECT_NE(timed.find("\nTime to index sequences\nCPU("), std::string::npos);
  EXPECT_EQ(std::count(timed.begin(), timed.end(), '\n'), 6);
  const std::string name = work.at("text");
  EXPECT_TRUE(messages(11, 0).ends_with(
      "\nOpening database\nLoading database\nIndexing sequence data\nOpening Index file\nOpening database "
      "file\nCounting characters to write to .sq file\nTotal characters to write: 8\nWriting headers\n"
      "p->DB_FILE->name:" +
      name + "\nLength of p->DB_FILE->name: " + std::to_string(name.size() + 1) +
      "\nWriting index and .sq files\n"));
}

}  // namespace
