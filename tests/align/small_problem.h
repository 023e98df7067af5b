// Small alphabets, random sequences and an independent model of the recurrence for the tests of this folder.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "align/lookup.h"
#include "align/scan_reference.h"
#include "driver/params.h"
#include "seq/matrix.h"

using Codes = std::vector<int8_t>;
using Random = std::mt19937;

inline int32_t uniform(Random& random, int32_t low, int32_t high) {
  return std::uniform_int_distribution<int32_t>(low, high)(random);
}

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

// The alphabet `letters` with score(query code, target code) between letters, 0 elsewhere.
inline ScoreMatrix small_matrix(const std::string& letters,
                                const std::function<int32_t(int32_t, int32_t)>& score) {
  ScoreMatrix matrix;
  matrix.indx = UTstring((letters + " ^:!").c_str());
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
  SetMinMaxMatrixValues(matrix);
  return matrix;
}

inline ScoreMatrix random_matrix(Random& random) {
  return small_matrix(
      "ABCX", [&](int32_t a, int32_t b) { return a == b ? uniform(random, 2, 6) : uniform(random, -4, 2); });
}

// Letters as a stored sequence of codes: pad, residues, zero.
inline Codes encoded(const std::string& letters, const ScoreMatrix& matrix) {
  Codes codes = {residue_code(matrix, ' ')};
  for (const char letter : letters) codes.push_back(residue_code(matrix, letter));
  codes.push_back(0);
  return codes;
}

inline std::string random_letters(Random& random, int32_t length) {
  std::string letters;
  for (int32_t k = 0; k < length; ++k) letters += "ABCX"[uniform(random, 0, 3)];
  return letters;
}

inline int32_t stored_length(const Codes& codes) {
  return static_cast<int32_t>(codes.size());
}

// One pair to align. Penalties are those of the table's gap rows; `uniform` ones equal LD_PEN and LI_PEN.
struct Problem {
  ScoreMatrix matrix;
  Params p;
  Codes query;
  Codes target;
  LookupTable table;
  int32_t qlen() const { return stored_length(query); }
  int32_t dlen() const { return stored_length(target); }
  bool flagged() const { return p.MODE == 202 || p.MODE == 212; }
  bool from_table() const { return p.MODE == 210 || p.MODE == 212; }
  int32_t* extend_row() { return table[residue_code(matrix, ' ')]; }
  int32_t* open_row() { return table[residue_code(matrix, ':')]; }
  int32_t* gap_row(bool open) { return open && flagged() ? open_row() : extend_row(); }
};

inline Problem make_problem(int32_t mode, ScoreMatrix matrix, const std::string& query,
                            const std::string& target, int32_t extend, int32_t open) {
  Problem problem;
  problem.matrix = std::move(matrix);
  problem.p = small_params(mode);
  problem.p.LD_PEN = extend;
  problem.p.LI_PEN = open;
  problem.query = encoded(query, problem.matrix);
  problem.target = encoded(target, problem.matrix);
  problem.table = mlookgap(problem.query.data(), problem.qlen(), problem.matrix, extend, open, &problem.p);
  return problem;
}

inline Problem random_problem(Random& random, int32_t mode, int32_t longest) {
  const int32_t extend = uniform(random, 0, 3);
  Problem problem = make_problem(
      mode, random_matrix(random), random_letters(random, uniform(random, 1, longest)),
      random_letters(random, uniform(random, 1, longest)), extend, extend + uniform(random, 0, 5));
  if (problem.from_table()) {
    for (int32_t i = 0; i < problem.qlen(); ++i) {
      problem.extend_row()[i] = uniform(random, 0, 4);
      problem.open_row()[i] = uniform(random, 0, 8);
    }
  }
  return problem;
}

inline int32_t scan_score(const Problem& problem) {
  const Params& p = problem.p;
  const int8_t* target = problem.target.data();
  switch (p.MODE) {
    case 200:
      return swl(problem.qlen(), target, problem.dlen(), problem.table, p.LD_PEN);
    case 202:
      return swli(problem.qlen(), target, problem.dlen(), problem.table, p.LD_PEN, p.LI_PEN);
    case 210:
      return swlv(problem.qlen(), target, problem.dlen(), problem.table, problem.matrix, &p);
    default:
      return swliv(problem.qlen(), target, problem.dlen(), problem.table, problem.matrix, &p);
  }
}

// The whole matrix of cells, each worked out by itself from the definition.
struct Cell {
  int32_t value = 0;
  uint8_t flags = 0;
};

struct CellModel {
  std::vector<std::vector<Cell>> cells;  // [i][j]

  explicit CellModel(Problem& problem) {
    const auto columns = static_cast<std::size_t>(problem.qlen() - 1);
    const auto rows = static_cast<std::size_t>(problem.dlen() - 1);
    cells.assign(columns, std::vector<Cell>(rows));
    for (std::size_t i = 1; i < columns; ++i) {
      for (std::size_t j = 1; j < rows; ++j) {
        const auto penalty = [&](const Cell& from, uint8_t direction) {
          return problem.gap_row((from.flags & direction) == 0)[i - 1];
        };
        const int32_t substitution = problem.matrix.pairscore[problem.query[i]][problem.target[j]];
        const int32_t diagonal = cells[i - 1][j - 1].value + substitution;
        const int32_t up = cells[i][j - 1].value - penalty(cells[i][j - 1], MOVE_UP);
        const int32_t left = cells[i - 1][j].value - penalty(cells[i - 1][j], MOVE_LEFT);
        Cell& cell = cells[i][j];
        cell.value = std::max({0, diagonal, up, left});
        if (cell.value == diagonal) cell.flags |= MOVE_DIAGONAL;
        if (cell.value == up) cell.flags |= MOVE_UP;
        if (cell.value == left) cell.flags |= MOVE_LEFT;
      }
    }
  }

  const Cell& at(int32_t i, int32_t j) const {
    return cells[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
  }
  int32_t best() const {
    int32_t best = -1;
    for (std::size_t i = 1; i < cells.size(); ++i) {
      for (std::size_t j = 1; j < cells[i].size(); ++j) best = std::max(best, cells[i][j].value);
    }
    return best;
  }
};

// What a routine writes to a stream.
inline std::string written(const std::function<void(FILE*)>& routine) {
  FILE* stream = std::tmpfile();
  routine(stream);
  std::string text(static_cast<std::size_t>(std::ftell(stream)), '\0');
  std::rewind(stream);
  text.resize(std::fread(text.data(), 1, text.size(), stream));
  std::fclose(stream);
  return text;
}
