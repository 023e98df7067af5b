#include "bdb/loader.h"

#include <algorithm>
#include <climits>

#include "bdb_data.h"
#include "util/timing.h"

namespace {

const char* const SMALL = ">one first\nACDEF\n>two\n\n>three third one\nMKVW\n";

class Loader : public BinaryDatabaseTest {
 protected:
  const ScoreMatrix& matrix(const char* name = "BLOSUM62") {
    p.MATRIX_FILE.name = name;
    return *getmat(&p);
  }

  // The database as load_database gives it, encoded, as one text; also for one that was damaged.
  std::string contents() {
    Database database;
    const ScoreMatrix& scores = matrix();
    load_database(database, scores, &p);
    if (!stored_as_codes(&p)) encode_sequences(database.seqs, database.n, scores);
    p.matrix->dbcount.assign(static_cast<std::size_t>(scores.inlen), 0);
    GetDBFreqs(database.seqs, database.n, &p);
    std::string text;
    for (int32_t k = 0; k < database.n; ++k) {
      const SeqRec& s = database.seqs[k];
      text += std::string(s.id, static_cast<std::size_t>(s.ilen) + 1) + s.title + "\n";
      text.append(reinterpret_cast<const char*>(s.seq), static_cast<std::size_t>(s.len)) += "\n";
    }
    p.binfo = nullptr;
    return text;
  }

  // Writes the two files and loads them in a process of its own, which must either find `expected` or end
  // with a message that names one of the files and status -1. Returns whether the files were accepted.
  bool accepted(const std::string& index, const std::string& sequences, const std::string& expected) {
    write_file(path(p.BDB_INDEX_FILE.name), index);
    write_file(path(p.BDB_SEQ_FILE.name), sequences);
    bool fine = false;
    const auto judge = [&fine](int status) {
      fine = testing::ExitedWithCode(0)(status);
      return fine || testing::ExitedWithCode(255)(status);
    };
    const auto load = [&] { std::exit(contents() == expected ? 0 : 7); };
    EXPECT_EXIT(load(), judge, "^$|^fread not read|file .*db.b[is][xq] is damaged: |strings do not match");
    return fine;
  }
};

TEST_F(Loader, GivesWhatTheTextHolds) {
  const std::string text = random_fasta(200) + ">long\n" + std::string(40000, 'W') + "\n";
  write_file(path(p.DB_FILE.name), text);
  const std::string wanted = contents();
  for (const int32_t codes : {0, 1}) {
    p.BDB_GIVEN = 0;
    p.APPLY_INDEX = codes;
    p.DO_SORT = 0;
    build(text);
    p.BDB_GIVEN = 1;
    p.APPLY_INDEX = 1 - codes;
    EXPECT_EQ(contents(), wanted);
    EXPECT_EQ(p.APPLY_INDEX, codes) << "the file decides";
  }
}

TEST_F(Loader, AnEmptyDatabaseIsNoFault) {
  build("");
  BinaryDatabase database;
  loadbdb(database, matrix(), &p);
  EXPECT_TRUE(database.seqs.empty());
  EXPECT_EQ(p.binfo, &database.info);
}

TEST_F(Loader, CodesBelongToOneAlphabet) {
  p.BDB_GIVEN = 1;
  build(SMALL);
  const std::string letters = contents();
  const ScoreMatrix& other = matrix("md.mat");
  BinaryDatabase database;
  loadbdb(database, other, &p);  // letters suit any matrix
  EXPECT_FALSE(accepted(field(1) + index_bytes().substr(4), sequence_bytes(), "")) << "letters are no codes";
  p.APPLY_INDEX = 1;
  build(SMALL);
  EXPECT_EQ(contents(), letters);
  ScoreMatrix swapped = matrix();
  std::swap(swapped.indx[0], swapped.indx[1]);
  EXPECT_EXIT(loadbdb(database, swapped, &p), testing::ExitedWithCode(255),
              "^ERROR: Database and Matrix index strings do not match!!\n\n"
              "Database index string:\\(ARNDCQEGHILKMFPSTWYVBZX \\)\n"
              "Matrix index string  :\\(RANDCQEGHILKMFPSTWYVBZX \\)\n"
              "If you wish to use this matrix file you can do one of the following:\n"
              "1  modify the matrix so that the index coincides with the databse\n"
              "2  rebuild the database with the APPLY_INDEX flag set to 0 \\(easiest\\)\n\n$");
  // A longer index string is accepted when it begins alike.
  const std::string index = index_bytes();
  write_file(path(p.BDB_INDEX_FILE.name),
             field(1) + field(26) + index.substr(8, 24) + "^:" + index.substr(32));
  EXPECT_EQ(contents(), letters);
}

TEST_F(Loader, TruncatedFilesEndWithAMessage) {
  p.BDB_GIVEN = 1;
  for (const int32_t codes : {0, 1}) {
    p.APPLY_INDEX = codes;
    build(SMALL);
    const std::string index = index_bytes();
    const std::string sequences = sequence_bytes();
    const std::string wanted = contents();
    EXPECT_TRUE(accepted(index + "more", sequences + "more", wanted)) << "what follows is not read";
    for (std::size_t k = 0; k < (codes == 1 ? index.size() : 0); ++k) {
      EXPECT_FALSE(accepted(index.substr(0, k), sequences, wanted)) << k;
    }
    for (std::size_t k = 0; k < sequences.size(); ++k) {
      EXPECT_FALSE(accepted(index, sequences.substr(0, k), wanted)) << k;
    }
  }
}

TEST_F(Loader, ExtremeFieldsEndWithAMessage) {
  p.BDB_GIVEN = 1;
  p.APPLY_INDEX = 1;
  build(SMALL);
  const std::string index = index_bytes();
  const std::string sequences = sequence_bytes();
  const std::string wanted = contents();
  const std::size_t counts = 8 + 24;
  const std::size_t name = counts + 16 + 26;
  const std::size_t records = index.size() - 3 * 24;
  std::vector<std::size_t> fields = {0, 4, counts, counts + 4, counts + 8, counts + 12, name};
  for (std::size_t at = records; at < index.size(); at += 4) fields.push_back(at);
  for (const std::size_t at : fields) {
    int32_t value;
    std::memcpy(&value, &index[at], sizeof value);
    for (const int32_t bad : {INT_MIN, -1, 0, value - 1, value + 1, INT_MAX}) {
      if (bad == value) continue;
      std::string damaged = index;
      damaged.replace(at, 4, field(bad));
      // A total above the size of the sequence file only brings the warning of a short file.
      EXPECT_EQ(accepted(damaged, sequences, wanted), at == counts + 8 && bad > value) << at << " " << bad;
    }
  }
}

TEST_F(Loader, DamagedBytesNeverHarm) {
  p.BDB_GIVEN = 1;
  std::mt19937 random(3);
  for (const int32_t codes : {0, 1}) {
    p.APPLY_INDEX = codes;
    build(SMALL);
    const std::string good_index = index_bytes();
    const std::string good_sequences = sequence_bytes();
    for (int round = 0; round < 60; ++round) {
      std::string index = good_index;
      std::string sequences = good_sequences;
      std::string& damaged = round % 2 == 0 ? index : sequences;
      for (int k = round % 3; k >= 0; --k) damaged[random() % damaged.size()] = static_cast<char>(random());
      write_file(path(p.BDB_INDEX_FILE.name), index);
      write_file(path(p.BDB_SEQ_FILE.name), sequences);
      const auto load = [&] { std::exit(contents().empty() ? 7 : 0); };
      const auto ended = [](int status) {
        return testing::ExitedWithCode(0)(status) || testing::ExitedWithCode(255)(status);
      };
      EXPECT_EXIT(load(), ended, "") << "codes " << codes << " round " << round;
    }
  }
}

TEST_F(Loader, TellsWhatItFoundAndHowLongItTook) {
  build(">A\nAC\n");
  const auto messages = [&](int32_t verbose, int32_t time) {
    const ScoreMatrix& scores = matrix();
    p.VERBOSE = verbose;
    p.TIME = time;
    BinaryDatabase database;
    testing::internal::CaptureStderr();
    loadbdb(database, scores, &p);
    p.VERBOSE = 0;
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(messages(0, 5), "");
  const std::string index = index_bytes();
  const std::string name = path(p.DB_FILE.name);
  EXPECT_EQ(
      messages(1, 5),
      "Opening Index file\nOpening database file\nLoading .in preamble\n\nInformation about this "
      "database\nSequence index flag:    0 \nLength of index string: 24 \nThe index "
      "string:ARNDCQEGHILKMFPSTWYVBZX \nNumber of sequences in database: 1\nNumber of residues in database: "
      "2\nTotal characters in database: 8\n\nLength of date string: 26\nDatabase created on: " +
          index.substr(48, 25) + "Length of name string: " + std::to_string(name.size() + 1) +
          "\nFrom: " + name + "\nNow reading the seq file into buffer\nNow creating seqs array\n");
  for (const bool running : {false, true}) {
    UT_reset_times();
    if (running) UT_init_times();
    std::string timed = messages(0, 6);
    EXPECT_EQ(UT_keep_times().running, running) << "the stopwatch of a driver goes on";
    for (const char* label :
         {"loadbdb: have read header info: CPU(", "\nloadbdb: read sequence database: CPU(",
          "\nloadbdb: malloc'd seqs array: CPU(", "\nloadbdb indexed seqs array complete CPU("}) {
      const std::size_t at = timed.find(label);
      ASSERT_NE(at, std::string::npos) << label;
      timed.erase(0, at + 1);
    }
  }
  UT_reset_times();
}

}  // namespace
