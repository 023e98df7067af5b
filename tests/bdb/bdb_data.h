// A directory, a configuration and files for the tests of the binary database.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "bdb/builder.h"
#include "bdb/database.h"
#include "driver/params.h"
#include "seq/alphabet.h"
#include "seq/matrix.h"

inline void write_file(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string read_file(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// A 32-bit field as the files hold it.
inline std::string field(int32_t value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

// A FASTA file of n random sequences of up to 90 residues, with letters that no alphabet has.
inline std::string random_fasta(int n) {
  std::mt19937 random(7);
  std::string text;
  for (int k = 0; k < n; ++k) {
    text.append(">seq").append(std::to_string(random() % 1000)).append(k % 3 == 0 ? "\n" : " a title\n");
    for (auto left = random() % 91; left > 0; --left) text += "ACDEFGHIKLMNPQRSTVWYBZXJOUacd"[random() % 29];
    text += "\n";
  }
  return text;
}

class BinaryDatabaseTest : public testing::Test {
 protected:
  void SetUp() override {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    directory = testing::TempDir() + "/" + test->test_suite_name() + "_" + test->name();
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);
    p.MATRIX_DIR = ZELVAN_SOURCE_DIR "/data/matrices";
    p.MATRIX_FORMAT = 1;
    p.GAP_CHARACTER = ' ';
    p.FGAP_CHARACTER = '^';
    p.IGAP_CHARACTER = ':';
    p.STOP_CHARACTER = '!';
    p.PRECISION = 100;
    p.DB_FORMAT = 1;
    p.MAX_NSEQ = 1000;
    p.MAX_SEQ_LEN = 10000000;
    p.DB_FILE.name = directory + "/text.fasta";
    p.BDB_INDEX_FILE.name = directory + "/db.bix";
    p.BDB_SEQ_FILE.name = directory + "/db.bsq";
    p.EXTRACT_FILE.name = directory + "/extract.seq";
    p.STDERR = stderr;
  }
  void TearDown() override { std::filesystem::remove_all(directory); }

  std::string path(const UTstring& name) const { return {name.begin(), name.end()}; }
  std::string index_bytes() const { return read_file(path(p.BDB_INDEX_FILE.name)); }
  std::string sequence_bytes() const { return read_file(path(p.BDB_SEQ_FILE.name)); }

  // Builds the binary database of a text.
  void build(const std::string& text) {
    write_file(path(p.DB_FILE.name), text);
    p.MATRIX_FILE.name = "BLOSUM62";  // reading a matrix makes this a path
    makedb(&p);
  }

  std::string directory;
  Params p;
};
