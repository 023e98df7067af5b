// Random problems for the frame-shift kernels: codes, a table of scores, penalties.
#pragma once

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <random>
#include <vector>

#include "align/lookup.h"
#include "util/table.h"

using Random = std::mt19937;
using Codes = std::vector<int8_t>;
constexpr int32_t NCODES = 4;

inline int32_t uniform(Random& random, int32_t low, int32_t high) {
  return std::uniform_int_distribution<int32_t>(low, high)(random);
}

// A stored sequence: pad, codes, terminator.
inline Codes stored(const Codes& residues) {
  Codes codes = residues;
  codes.insert(codes.begin(), 0);
  codes.push_back(0);
  return codes;
}

inline Codes random_codes(Random& random, int32_t residues) {
  Codes codes(static_cast<std::size_t>(residues));
  for (int8_t& code : codes) code = static_cast<int8_t>(uniform(random, 0, NCODES - 1));
  return stored(codes);
}

inline int32_t length(const Codes& codes) {
  return static_cast<int32_t>(codes.size());
}

// What a column code scores against a row code.
using Scores = Table<int32_t>;

inline Scores random_scores(Random& random) {
  Scores scores = make_table<int32_t>(NCODES, NCODES, 0);
  for (int32_t a = 0; a < NCODES; ++a) {
    for (int32_t b = 0; b < NCODES; ++b)
      scores[a][b] = a == b ? uniform(random, 3, 9) : uniform(random, -5, 1);
  }
  return scores;
}

inline LookupTable table_of(const Codes& columns, const Scores& scores) {
  LookupTable table = make_table<int32_t>(NCODES, length(columns), 0);
  for (int32_t c = 0; c < NCODES; ++c) {
    for (std::size_t j = 1; j + 1 < columns.size(); ++j) table[c][j] = scores[columns[j]][c];
  }
  return table;
}

struct Penalties {
  int32_t ld, li, fs;
};

inline Penalties random_penalties(Random& random, int32_t lowest) {
  return {uniform(random, lowest, 6), uniform(random, lowest, 9), uniform(random, lowest, 12)};
}

inline std::ostream& operator<<(std::ostream& out, const Penalties& pen) {
  return out << "ld " << pen.ld << " li " << pen.li << " fs " << pen.fs;
}
