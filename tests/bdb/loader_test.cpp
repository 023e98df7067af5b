#include "bdb/loader.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "bdb/builder.h"
#include "bdb/database.h"
#include "seq/alphabet.h"
#include "seq/composition.h"
#include "seq/matrix.h"
#include "support/capture.h"
#include "support/settings.h"

namespace zelvan {
namespace {

using testing::ExitedWithCode;

// A 32-bit field as the files hold it.
std::string field(int32_t value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

class Loader : public testing::Test {
 protected:
  Loader() {
    set_defaults(&p);
    set_keys(p, "MATRIX_DIR " ZELVAN_SOURCE_DIR
                "/data/matrices MAX_NSEQ 1000 MAX_SEQ_LEN 10000000 TIME 0 DO_SORT 0");
    p.DB_FILE.name = work.file("text", ">one first\nACDEF\n>second\n\n>three third one\nMKVW\n");
    p.BDB_INDEX_FILE.name = work.at("db.bix");
    p.BDB_SEQ_FILE.name = work.at("db.bsq");
  }

  const ScoreMatrix& matrix(const char* name = "BLOSUM62") {
    p.MATRIX_FILE.name = name;  // reading a matrix makes this a path
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

  // A small binary database that is there to be damaged.
  void build_small(int32_t codes) {
    p.BDB_GIVEN = 1;
    p.APPLY_INDEX = codes;
    p.MATRIX_FILE.name = "BLOSUM62";
    makedb(&p);
    index = file_content(work.at("db.bix"));
    sequences = file_content(work.at("db.bsq"));
    wanted = contents();
  }

  // Writes the two files and loads them in a process of its own, which must either find what was built or end with
  // a message that names one of the files and status -1. Returns whether the files were accepted.
  bool accepted(const std::string& index_bytes, const std::string& sequence_bytes) {
    work.file("db.bix", index_bytes);
    work.file("db.bsq", sequence_bytes);
    bool fine = false;
    const auto judge = [&fine](int status) {
      fine = ExitedWithCode(0)(status);
      return fine || ExitedWithCode(255)(status);
    };
    const auto load = [&] { std::exit(contents() == wanted ? 0 : 7); };
    EXPECT_EXIT(
        load(), judge,
        "^$|^fread not read|^# Warning: GetDBFreqs|file .*db.b[is][xq] is damaged: |strings do not match");
    return fine;
  }

  TemporaryDirectory work;
  Params p;
  std::string index, sequences, wanted;
};

TEST_F(Loader, CodesBelongToOneAlphabet) {
  build_small(0);
  const std::string letters = wanted;
  BinaryDatabase database;
  loadbdb(database, matrix("md.mat"), &p);  // letters suit any matrix
  EXPECT_FALSE(accepted(field(1) + index.substr(4), sequences)) << "letters are no codes";
  build_small(1);
  EXPECT_EQ(wanted, letters);
  ScoreMatrix swapped = matrix();
  std::swap(swapped.indx[0], swapped.indx[1]);
  EXPECT_EXIT(loadbdb(database, swapped, &p), ExitedWithCode(255),
              "^ERROR: Database and Matrix index strings do not match!!\n\n"
              "Database index string:\\(ARNDCQEGHILKMFPSTWYVBZX \\)\n"
              "Matrix index string  :\\(RANDCQEGHILKMFPSTWYVBZX \\)\n"
              "If you wish to use this matrix file you can do one of the following:\n"
              "1  modify the matrix so that the index coincides with the databse\n"
              "2  rebuild the database with the APPLY_INDEX flag set to 0 \\(easiest\\)\n\n$");
  // A longer index string is accepted when it begins alike.
  EXPECT_TRUE(accepted(field(1) + field(26) + index.substr(8, 24) + "^:" + index.substr(32), sequences));
}

TEST_F(Loader, TruncatedFilesEndWithAMessage) {
  for (const int32_t codes : {0, 1}) {
    build_small(codes);
    EXPECT_TRUE(accepted(index + "more", sequences)) << "what follows is not read";
    EXPECT_FALSE(accepted(index, sequences + "more")) << "of another build";
    for (std::size_t k = 0; k < (codes == 1 ? index.size() : 0); ++k) {
      EXPECT_FALSE(accepted(index.substr(0, k), sequences)) << k;
    }
    for (std::size_t k = 0; k < sequences.size(); ++k)
      EXPECT_FALSE(accepted(index, sequences.substr(0, k))) << k;
  }
}

TEST_F(Loader, ExtremeFieldsEndWithAMessage) {
  build_small(1);
  const std::size_t counts = 8 + 24;
  std::vector<std::size_t> fields = {0, 4, counts, counts + 4, counts + 8, counts + 12, counts + 16 + 26};
  for (std::size_t at = index.size() - 3 * 24; at < index.size(); at += 4) fields.push_back(at);
  for (const std::size_t at : fields) {
    int32_t value;
    std::memcpy(&value, &index[at], sizeof value);
    for (const int32_t bad : {INT_MIN, -1, 0, value - 1, value + 1, INT_MAX}) {
      if (bad == value) continue;
      std::string damaged = index;
      damaged.replace(at, 4, field(bad));
      // A total above the size of the sequence file and wrong residues bring warnings only.
      const bool harmless = (at == counts + 8 && bad > value) || (at == counts + 4 && bad >= 0);
      EXPECT_EQ(accepted(damaged, sequences), harmless) << at << " " << bad;
    }
  }
}

TEST_F(Loader, PiecesMayLieInAnyOrderButShareNoLetters) {
  for (const int32_t codes : {0, 1}) {
    build_small(codes);
    constexpr std::size_t RECORDS = 3 * 24;
    std::string fields = index.substr(index.size() - RECORDS);
    std::string pieces;
    for (std::size_t at = RECORDS; at > 0; at -= 8) {  // from the last residues to the first identifier
      int32_t place[2];
      std::memcpy(place, &fields[at - 8], sizeof place);
      fields.replace(at - 8, 4, field(static_cast<int32_t>(pieces.size())));
      const int32_t size = place[1] + (at % 24 == 0 ? 0 : 1);  // only of residues the zero byte is counted
      pieces += sequences.substr(static_cast<std::size_t>(place[0]), static_cast<std::size_t>(size));
    }
    EXPECT_TRUE(accepted(index.substr(0, index.size() - RECORDS) + fields, pieces)) << codes;
  }
  build_small(0);
  const std::string last_residues = index.substr(index.size() - 8);
  std::string twice = index;
  EXPECT_FALSE(accepted(twice.replace(index.size() - 3 * 24 + 16, 8, last_residues), sequences));
}

TEST_F(Loader, FilesOfTwoBuildsAreRefused) {
  const char* const texts[] = {">one first\nACDEF\n>second\n\n>three third one\nMKVW\n",
                               ">one first\nACDEFACD\n>t\n\n>three third one\nMKVWAA\n",
                               ">one first\nACDE\n>second\nA\n>three third one\nMKVW\n",
                               ">a\nACDEFACDEFACDEFACDEFAAAAAAACDEFACDEFACDEFACD\n"};
  std::vector<std::pair<std::string, std::string>> built;
  for (const int32_t codes : {0, 1}) {
    for (const char* text : texts) {
      work.file("text", text);
      build_small(codes);
      built.emplace_back(index, sequences);
      EXPECT_EQ(sequences.size(), built[0].second.size()) << "else the size alone would tell them apart";
    }
  }
  for (const auto& [index_bytes, of_one] : built) {
    for (const auto& [of_other, sequence_bytes] : built) {
      if (index_bytes == of_other) continue;
      EXPECT_FALSE(accepted(index_bytes, sequence_bytes));
    }
  }
}

}  // namespace
}  // namespace zelvan
