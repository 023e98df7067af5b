// A directory, a configuration and files for the tests of the binary database.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "bdb/builder.h"
#include "bdb/database.h"
#include "seq/alphabet.h"
#include "seq/matrix.h"
#include "support/capture.h"
#include "support/settings.h"
#include "util/streams.h"

// A 32-bit field as the files hold it.
inline std::string field(int32_t value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

class BinaryDatabaseTest : public testing::Test {
 protected:
  BinaryDatabaseTest() {
    set_defaults(&p);
    set_keys(p, "MATRIX_DIR " ZELVAN_SOURCE_DIR
                "/data/matrices MAX_NSEQ 1000 MAX_SEQ_LEN 10000000 TIME 0 DO_SORT 0");
    p.DB_FILE.name = work.at("text");
    p.BDB_INDEX_FILE.name = work.at("db.bix");
    p.BDB_SEQ_FILE.name = work.at("db.bsq");
    p.EXTRACT_FILE.name = work.at("extract");
  }

  const ScoreMatrix& matrix(const char* name = "BLOSUM62") {
    p.MATRIX_FILE.name = name;  // reading a matrix makes this a path
    return *getmat(&p);
  }

  // Builds the binary database of a text.
  void build(const std::string& text) {
    work.file("text", text);
    p.MATRIX_FILE.name = "BLOSUM62";
    makedb(&p);
  }

  TemporaryDirectory work;
  Params p;
};
