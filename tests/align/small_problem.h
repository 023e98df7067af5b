// Pairs of small sequences and an independent model of the recurrence for the tests of this folder.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "align/cell_flags.h"
#include "align/lookup.h"
#include "align/scan/scan.h"
#include "support/small_alphabet.h"

namespace zelvan {

constexpr int32_t MODES[] = {200, 202, 210, 212};

inline SeqRec record_of(Codes& codes) {
  SeqRec seq;
  seq.seq = codes.data();
  seq.len = stored_length(codes);
  return seq;
}

// One pair to align. The modes 210 and 212 take their penalties from the table's gap rows.
struct Problem {
  ScoreMatrix matrix;
  Params p;
  Codes query;
  Codes target;
  LookupTable table;
  int32_t qlen() const { return stored_length(query); }
  int32_t dlen() const { return stored_length(target); }
  bool flagged() const { return p.MODE == 202 || p.MODE == 212; }
  int32_t* extend_row() { return table[residue_code(matrix, ' ')]; }
  int32_t* open_row() { return table[residue_code(matrix, ':')]; }
  int32_t* gap_row(bool open) { return open && flagged() ? open_row() : extend_row(); }
  // By the scalar kernel of the mode.
  int32_t scan_score() {
    const SeqRec record = record_of(target);
    int32_t score = -77;
    scan_database_by(InstructionSet::REFERENCE, LaneWidth::BITS8, qlen(), {&record, 1}, table, matrix, &score,
                     &p);
    return score;
  }
};

// Scores are asymmetric, sequences have 1..longest residues.
inline Problem random_problem(Random& random, int32_t mode, int32_t longest) {
  const auto score = [&](int32_t a, int32_t b) {
    return a == b ? uniform(random, 2, 6) : uniform(random, -4, 2);
  };
  const auto residues = [&](const ScoreMatrix& matrix) {
    return encoded(random_letters(random, "ABCX", uniform(random, 1, longest)), matrix);
  };
  Problem problem;
  problem.matrix = small_matrix("ABCX", score);
  problem.p = small_params(mode);
  problem.p.LD_PEN = uniform(random, 0, 3);
  problem.p.LI_PEN = problem.p.LD_PEN + uniform(random, 0, 5);
  problem.query = residues(problem.matrix);
  problem.target = residues(problem.matrix);
  problem.table = mlookgap(problem.query.data(), problem.qlen(), problem.matrix, problem.p.LD_PEN,
                           problem.p.LI_PEN, &problem.p);
  if (mode == 210 || mode == 212) {
    for (int32_t i = 0; i < problem.qlen(); ++i) {
      problem.extend_row()[i] = uniform(random, 0, 4);
      problem.open_row()[i] = uniform(random, 0, 8);
    }
  }
  return problem;
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

}  // namespace zelvan
