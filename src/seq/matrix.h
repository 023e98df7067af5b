// The residue pair-score matrix: alphabet, scores, and the residue counts of the database (composition.h).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/sequence.h"
#include "util/memory.h"
#include "util/table.h"

namespace zelvan {

struct ScoreMatrix {
  UTstring title;
  UTstring indx;  // alphabet: the file's letters, then gap, F-gap, I-gap and stop character
  std::array<int8_t, 128> xindex{};  // character to code, see residue_code; not in `indx`: the code of "X"
  int32_t inlen = 0;                 // codes are 0 .. inlen-1; gap inlen-4, stop inlen-1
  Table<int32_t> pairscore;          // [code][code], matrix units x PRECISION
  int32_t minval = 0;                // extremes of pairscore, special rows included
  int32_t maxval = 0;
  UTvector<int64_t> dbcount;  // residues of each code in the database; zero until GetDBFreqs
  UTvector<double> dbfreq;    // dbcount / residues of the database
};

// residue_code - the code of a character; bytes outside 0..126 have the code of "X".
inline int8_t residue_code(const ScoreMatrix& matrix, int character) {
  const auto byte = static_cast<unsigned char>(character);
  return matrix.xindex[byte < 127 ? byte : static_cast<unsigned char>('X')];
}

// residue_letter - the letter of a code, 0 <= code < inlen.
inline char residue_letter(const ScoreMatrix& matrix, int code) {
  return matrix.indx[static_cast<std::size_t>(code)];
}

// getmat - reads MATRIX_DIR/MATRIX_FILE in the layout of MATRIX_FORMAT: 0 plain ("PIR"), 1 NCBI.
// Does   joins directory and name in p->MATRIX_FILE, reads alphabet and scores, prints them on std_err when
//        VERBOSE is set, then gives the stop code its weight and takes the extremes
// Out    p->matrix: the new matrix; one that was there is released
// Returns p->matrix, which owns it
// Ends   on every fault of the file (status -1)
ScoreMatrix* getmat(Params* p);

// SetStopCodonWeight - STOP_WEIGHT in the whole row and column of the stop code.
// Ends   when the last letter of the alphabet is not STOP_CHARACTER (status -1)
void SetStopCodonWeight(ScoreMatrix& matrix, const Params* p);

// SetMinMaxMatrixValues - the extremes over all codes, the special ones included.
void SetMinMaxMatrixValues(ScoreMatrix& matrix);

// PrintPairscoreMatrix - the whole matrix as comment lines; scores in matrix units, truncated toward zero,
// but the extremes as stored.
void PrintPairscoreMatrix(FILE* stream, const ScoreMatrix& matrix, const Params* p);

}  // namespace zelvan
