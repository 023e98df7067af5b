// Small sequences, a small matrix and a caught report, for the tests of this folder.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <string>

#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/streams.h"

// What `write` puts on the stream it is given; the report stream stands for that stream meanwhile.
inline std::string written(const std::function<void(FILE*)>& write) {
  char* text = nullptr;
  std::size_t size = 0;
  FILE* const usual = std_out;
  std_out = open_memstream(&text, &size);
  write(std_out);
  std::fclose(std_out);
  std_out = usual;
  std::string caught(text, size);
  std::free(text);
  return caught;
}

// Codes are positions in this alphabet; the last four are gap, F-gap, I-gap and stop.
constexpr const char* ALPHABET = "ARNDCX ^:!";
constexpr int8_t GAP = 6;

inline ScoreMatrix small_matrix() {
  ScoreMatrix matrix;
  matrix.title = "a small matrix";
  matrix.indx = ALPHABET;
  matrix.inlen = static_cast<int32_t>(matrix.indx.size());
  return matrix;
}

// Encoded sequences and their strings.
struct Sequences {
  std::deque<std::string> strings;
  UTvector<SeqRec> records;

  Sequences& add(const char* id, const char* title, const std::string& residues) {
    SeqRec seq;
    seq.id = strings.emplace_back(id).c_str();
    seq.title = strings.emplace_back(title).c_str();
    std::string& codes = strings.emplace_back(" " + residues);
    for (char& c : codes) c = static_cast<char>(std::string(ALPHABET).find(c));
    seq.seq = reinterpret_cast<int8_t*>(codes.data());
    seq.ilen = static_cast<int32_t>(std::string(id).size());
    seq.tlen = static_cast<int32_t>(std::string(title).size());
    seq.len = static_cast<int32_t>(residues.size()) + 2;
    records.push_back(seq);
    return *this;
  }
};
