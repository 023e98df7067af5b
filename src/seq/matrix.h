// The residue pair-score matrix: alphabet, scores, and the residue counts of the database.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/sequence.h"
#include "util/memory.h"
#include "util/table.h"

struct ScoreMatrix {
  UTstring title;
  UTstring indx;  // alphabet: the file's letters, then gap, F-gap, I-gap and stop character
  std::array<int8_t, 128> xindex{};  // character to code; whatever is not in `indx` has the code of "X"
  int32_t inlen = 0;                 // codes are 0 .. inlen-1; gap inlen-4, stop inlen-1
  Table<int32_t> pairscore;          // [code][code], matrix units x PRECISION
  int32_t minval = 0;                // extremes of pairscore, special rows included
  int32_t maxval = 0;
  UTvector<int32_t> dbcount;  // residues of each code in the database; zero until GetDBFreqs
  UTvector<double> dbfreq;    // dbcount / residues of the database
};

// residue_code - the code of a character; bytes outside 0..127 have the code of "X".
inline int8_t residue_code(const ScoreMatrix& matrix, int character) {
  const auto byte = static_cast<unsigned char>(character);
  return matrix.xindex[byte < 127 ? byte : static_cast<unsigned char>('X')];
}

// getmat - reads MATRIX_DIR/MATRIX_FILE in the layout of MATRIX_FORMAT, sets stop weight and extremes.
// Returns the matrix, which lives for the run; p->matrix points to it
// Ends   on every fault of the file (status -1)
ScoreMatrix* getmat(Params* p);

// The two layouts: title, alphabet and scores only.
void getmat_pir(ScoreMatrix& out_matrix, Params* p);
void getmat_ncbi(ScoreMatrix& out_matrix, Params* p);

void SetStopCodonWeight(ScoreMatrix& matrix, const Params* p);
void SetMinMaxMatrixValues(ScoreMatrix& matrix);

// PrintPairscoreMatrix - the whole matrix as comment lines, scores in matrix units.
void PrintPairscoreMatrix(FILE* stream, const ScoreMatrix& matrix, const Params* p);

// GetDBFreqs - adds the residues of encoded sequences to p->matrix->dbcount and sets dbfreq from
// p->binfo->nres; warns on p->STDERR when the sums do not agree.
void GetDBFreqs(const SeqRec* seqs, int32_t n, Params* p);

// DumpDBFreqs - the counts and frequencies as a table of comment lines.
void DumpDBFreqs(FILE* stream, const Params* p);
