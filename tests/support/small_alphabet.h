// Small alphabets, sequences in them and random numbers, for tests of everything that works on encoded
// sequences.
#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "driver/params.h"
#include "seq/alphabet.h"
#include "seq/matrix.h"
#include "seq/sequence.h"

namespace zelvan {

using Codes = std::vector<int8_t>;
using Random = std::mt19937;

inline int32_t uniform(Random& random, int32_t low, int32_t high) {
  return std::uniform_int_distribution<int32_t>(low, high)(random);
}

inline std::string random_letters(Random& random, const std::string& letters, int32_t length) {
  std::string text(static_cast<std::size_t>(length), ' ');
  for (char& letter : text) letter = letters[random() % letters.size()];
  return text;
}

// The special characters that small_matrix puts behind its letters, and PRECISION 1.
inline Params small_params(int32_t mode) {
  Params p;
  p.GAP_CHARACTER = ' ';
  p.FGAP_CHARACTER = '^';
  p.IGAP_CHARACTER = ':';
  p.STOP_CHARACTER = '!';
  p.PRECISION = 1;
  p.MODE = mode;
  return p;
}

// The alphabet `letters` and the special characters, with score(query code, target code) between letters,
// `stop` in the row and column of the stop character, 0 elsewhere.
inline ScoreMatrix small_matrix(const std::string& letters,
                                const std::function<int32_t(int32_t, int32_t)>& score, int32_t stop = 0) {
  ScoreMatrix matrix;
  matrix.title = "a small matrix";
  matrix.indx = (letters + " ^:!").c_str();
  matrix.inlen = static_cast<int32_t>(matrix.indx.size());
  matrix.xindex.fill(static_cast<int8_t>(letters.find('X')));
  for (std::size_t k = 0; k < matrix.indx.size(); ++k) {
    matrix.xindex[static_cast<std::size_t>(matrix.indx[k])] = static_cast<int8_t>(k);
  }
  matrix.pairscore = make_table<int32_t>(matrix.inlen, matrix.inlen, 0);
  const auto count = static_cast<int32_t>(letters.size());
  for (int32_t a = 0; a < count; ++a) {
    for (int32_t b = 0; b < count; ++b) matrix.pairscore[a][b] = score(a, b);
  }
  for (int32_t k = 0; k < matrix.inlen; ++k) {
    matrix.pairscore[k][matrix.inlen - 1] = matrix.pairscore[matrix.inlen - 1][k] = stop;
  }
  SetMinMaxMatrixValues(matrix);
  matrix.dbcount.assign(matrix.indx.size(), 0);
  matrix.dbfreq.assign(matrix.indx.size(), 0.0);
  return matrix;
}

inline ScoreMatrix match_or_not(const std::string& letters, int32_t match, int32_t mismatch,
                                int32_t stop = 0) {
  return small_matrix(
      letters, [=](int32_t a, int32_t b) { return a == b ? match : mismatch; }, stop);
}

// An encoded sequence, which lives as long as the program.
inline SeqRec sequence_of(const ScoreMatrix& matrix, const std::string& letters, const std::string& id = "s",
                          const std::string& title = "-") {
  static SeqStore store;
  const SeqRec seq = store_sequence(store, id.c_str(), static_cast<int32_t>(id.size()), title.c_str(),
                                    static_cast<int32_t>(title.size()), letters.c_str(),
                                    static_cast<int32_t>(letters.size()));
  seqtoi(seq.seq, seq.len, matrix);
  return seq;
}

// The same as codes: pad, residues, zero.
inline Codes encoded(const std::string& letters, const ScoreMatrix& matrix) {
  const SeqRec seq = sequence_of(matrix, letters);
  return {seq.seq, seq.seq + seq.len};
}

inline int32_t stored_length(const Codes& codes) {
  return static_cast<int32_t>(codes.size());
}

}  // namespace zelvan
