// Small problems for the frame-shift kernels: codes, a table of scores, penalties.
#pragma once

#include <ostream>

#include "align/lookup.h"
#include "dna/frame_shift_reference.h"
#include "support/small_alphabet.h"

namespace zelvan {

// A stored sequence: pad, codes, terminator.
inline Codes stored(Codes residues) {
  residues.insert(residues.begin(), 0);
  residues.push_back(0);
  return residues;
}

struct Penalties {
  int32_t ld, li, fs;
};

// Columns are the side of the table; either they or the rows are the translated sequence.
struct FrameProblem {
  Codes columns, rows;
  LookupTable table;
  Penalties pen;

  // scores[a][b]: what column code a scores against row code b.
  FrameProblem(Codes column_codes, Codes row_codes, const Table<int32_t>& scores, const Penalties& penalties)
      : columns(stored(std::move(column_codes))), rows(stored(std::move(row_codes))), pen(penalties) {
    table = make_table<int32_t>(scores.cols, qlen(), 0);
    for (int32_t c = 0; c < scores.cols; ++c) {
      for (int32_t j = 1; j <= qlen() - 2; ++j) table[c][j] = scores[columns[static_cast<std::size_t>(j)]][c];
    }
  }
  int32_t qlen() const { return stored_length(columns); }
  int32_t dlen() const { return stored_length(rows); }
  int32_t affine() const { return npswli2(qlen(), rows.data(), dlen(), table, pen.ld, pen.li, pen.fs); }
  int32_t linear() const { return npswl(qlen(), rows.data(), dlen(), table, pen.ld, pen.fs); }
};

inline std::ostream& operator<<(std::ostream& out, const FrameProblem& problem) {
  return out << problem.qlen() << " x " << problem.dlen() << ", ld " << problem.pen.ld << " li "
             << problem.pen.li << " fs " << problem.pen.fs;
}

inline FrameProblem random_frame_problem(Random& random, int32_t ncolumns, int32_t nrows,
                                         int32_t lowest_penalty) {
  constexpr int32_t ncodes = 4;
  Table<int32_t> scores = make_table<int32_t>(ncodes, ncodes, 0);
  for (int32_t& score : scores.cells) score = uniform(random, -5, 1);
  for (int32_t c = 0; c < ncodes; ++c) scores[c][c] = uniform(random, 3, 9);
  const auto codes = [&](int32_t residues) {
    Codes drawn(static_cast<std::size_t>(residues));
    for (int8_t& code : drawn) code = static_cast<int8_t>(uniform(random, 0, ncodes - 1));
    return drawn;
  };
  const Codes columns = codes(ncolumns), rows = codes(nrows);
  const Penalties pen = {uniform(random, lowest_penalty, 6), uniform(random, lowest_penalty, 9),
                         uniform(random, lowest_penalty, 12)};
  return {columns, rows, scores, pen};
}

}  // namespace zelvan
