#include "bdb/builder.h"

#include <sys/resource.h>

#include <csignal>
#include <set>

#include "bdb_data.h"

namespace {

class Builder : public BinaryDatabaseTest {
 protected:
  std::set<std::string> files() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
      names.insert(entry.path().filename());
    }
    return names;
  }
};

// Makes every file of this process fail beyond `bytes`, with an error or with the end of the process.
void limit_files(rlim_t bytes, void (*handler)(int)) {
  std::signal(SIGXFSZ, handler);
  const rlimit limit{bytes, bytes};
  setrlimit(RLIMIT_FSIZE, &limit);
}

// The whole format is compared with an independent writer in the end-to-end tests.
TEST_F(Builder, StoresLettersOrCodes) {
  build(">A\nac\n");
  EXPECT_EQ(sequence_bytes(), std::string("A\0-\0 AC\0", 8));
  const std::string record = field(0) + field(1) + field(2) + field(1) + field(4) + field(4);
  EXPECT_TRUE(index_bytes().ends_with(record));
  p.APPLY_INDEX = 1;
  build(">A\nac\n");
  EXPECT_EQ(sequence_bytes(), std::string("A\0-\0\x17\x00\x04\0", 8)) << "gap code 23, A 0, C 4";
  EXPECT_EQ(files(), (std::set<std::string>{"text.fasta", "db.bix", "db.bsq"})) << "no temporary files";
}

TEST_F(Builder, StoresTiesInTheOrderOfTheIndexSort) {
  p.DO_SORT = 1;
  build(">a\nAA\n>b\nCC\n>c\nDD\n>d\nE\n");
  std::string stored;  // by hand: the heap sort of the lengths 4 4 4 3 gives 4 3 2 1
  for (const char c : sequence_bytes()) stored += std::islower(c) != 0 ? std::string(1, c) : "";
  EXPECT_EQ(stored, "dcba");
}

TEST_F(Builder, AFullDiskLeavesTheOldDatabase) {
  build(">old\nAC\n");
  const std::string index = index_bytes();
  const std::string sequences = sequence_bytes();
  for (const int longest : {2000, 4000000}) {  // one that fails at the close, one in the middle
    SCOPED_TRACE(longest);
    const std::string text = ">new\n" + std::string(static_cast<std::size_t>(longest), 'A') + "\n";
    const auto build_within = [&](rlim_t bytes, void (*handler)(int)) {
      write_file(path(p.DB_FILE.name), text);
      p.MATRIX_FILE.name = "BLOSUM62";
      limit_files(bytes, handler);
      makedb(&p);
    };
    EXPECT_EXIT(build_within(1000, SIG_IGN), testing::ExitedWithCode(1),
                "Error writing File: .*\nFile: .*db.bsq was not written");
    EXPECT_EQ(files(), (std::set<std::string>{"text.fasta", "db.bix", "db.bsq"}));
    EXPECT_EXIT(build_within(1000, SIG_DFL), testing::KilledBySignal(SIGXFSZ), "");
    for (const std::string& name : files()) {
      if (name.ends_with(".tmp")) std::filesystem::remove(directory + "/" + name);
    }
    EXPECT_EQ(index_bytes(), index);
    EXPECT_EQ(sequence_bytes(), sequences);
  }
}

TEST_F(Builder, RefusesWhatItCannotStore) {
  p.MAX_NSEQ = 2;
  EXPECT_EXIT(build(">a\nAA\n>b\nCC\n>c\nDD\n"), testing::ExitedWithCode(255),
              "Too many sequences in .*text.fasta \\(> 2\\):  Increase MAX_NSEQ");
  EXPECT_EQ(files(), std::set<std::string>{"text.fasta"});
  for (UTstring* name : {&p.BDB_INDEX_FILE.name, &p.BDB_SEQ_FILE.name}) {
    const UTstring kept = *name;
    for (const char* wrong : {"/no/such/place", "/tmp"}) {
      *name = wrong;
      EXPECT_EXIT(build(">a\nAA\n"), testing::ExitedWithCode(255),
                  std::string("Error opening File: .*\n") + wrong + "\n");
      EXPECT_EQ(files(), std::set<std::string>{"text.fasta"}) << "the other file is removed";
    }
    *name = kept;
  }
}

TEST_F(Builder, TellsItsProgressAndTimes) {
  const auto messages = [&](int32_t verbose, int32_t time) {
    p.VERBOSE = verbose;
    p.TIME = time;
    testing::internal::CaptureStderr();
    build(">A a\nAC\n");
    return testing::internal::GetCapturedStderr();
  };
  p.APPLY_INDEX = 1;
  EXPECT_EQ(messages(0, 0), "Getting matrix\n");
  EXPECT_EQ(messages(0, 6), "Getting matrix\n");
  const std::string timed = messages(0, 1);
  EXPECT_NE(timed.find("Getting matrix\nHave read database\nCPU("), std::string::npos);
  EXPECT_NE(timed.find("\nTime to index sequences\nCPU("), std::string::npos);
  EXPECT_EQ(std::count(timed.begin(), timed.end(), '\n'), 6);
  const std::string told = messages(11, 0);
  const std::string name = path(p.DB_FILE.name);
  EXPECT_EQ(
      told.substr(told.rfind("Opening database\n")),
      "Opening database\nLoading database\nIndexing sequence data\nOpening Index file\nOpening database "
      "file\nCounting characters to write to .sq file\nTotal characters to write: 8\nWriting "
      "headers\np->DB_FILE->name:" +
          name + "\nLength of p->DB_FILE->name: " + std::to_string(name.size() + 1) +
          "\nWriting index and .sq files\n");
}

}  // namespace
