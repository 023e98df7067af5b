// What the score matrix and the database together say about residues: background frequencies and the target
// frequencies that the matrix implies. Profiles are made from both.
#pragma once

#include <cstdint>

#include "seq/matrix.h"
#include "util/memory.h"
#include "util/table.h"

namespace zelvan {

// A letter that stands for any of several residues (B, Z, J).
struct AmbiguousCode {
  int32_t code = 0;
  UTvector<int32_t> members;  // residue codes that it stands for
};

struct ResidueModel {
  UTvector<int32_t> residues;         // codes of the ordinary residues: letters A to Z but B, J, X and Z
  UTvector<AmbiguousCode> ambiguous;  // only those with at least one member in the alphabet
  UTvector<double> background;        // [code] > 0 and summing to 1 over the ordinary residues, else 0
  double lambda = 0;                  // natural units per matrix unit (not x PRECISION)
  Table<double> odds;                 // [b][c] = exp(lambda s(b, c)), ordinary b and c, else 0
};

// make_residue_model - background, scale and odds for one matrix and the database counted into it.
// Does   background: dbcount with one count added to every residue, so that none is 0.
//        lambda: the positive root of sum over b, c of p_b p_c exp(lambda s(b, c)) = 1; the target frequency
//        of the pair is then p_b p_c odds[b][c]. A matrix without such a root (its expected score is not
//        negative, or no score is positive) is taken to be in half bits: ln(2) / 2.
// Source Karlin & Altschul 1990, PNAS 87:2264
ResidueModel make_residue_model(const ScoreMatrix& matrix, int32_t precision);

}  // namespace zelvan
