// The residue pair-score matrix: alphabet, scores, and the residue counts of the database.
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
  UTvector<int32_t> dbcount;  // residues of each code in the database; zero until GetDBFreqs
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

// getmat - reads MATRIX_DIR/MATRIX_FILE in the layout of MATRIX_FORMAT (0 plain "PIR", 1 NCBI).
// Does   joins directory and name in p->MATRIX_FILE, reads alphabet and scores, prints them on std_err when
//        VERBOSE is set, then gives the stop code its weight and takes the extremes
// Out    p->matrix points to the result
// Returns the matrix, which lives for the run
// Ends   on every fault of the file (status -1)
ScoreMatrix* getmat(Params* p);

// getmat_pir, getmat_ncbi - the two layouts: title, indx, xindex, inlen and pairscore only, special rows and
// columns zero.
// In     plain layout: title line, letter line, then the full square of scores, row after row, free of line
//        breaks. NCBI layout: a "#" line first, a header line of letters that begins with a blank ("*" is no
//        letter there), one row per letter whose first token is skipped and whose last ones ("*") are ignored
// Ends   missing lines or scores, a letter list without "X" or with bytes that are no printable ASCII, more
//        letters than codes, scores that do not fit 32 bits x PRECISION (status -1)
void getmat_pir(ScoreMatrix& out_matrix, Params* p);
void getmat_ncbi(ScoreMatrix& out_matrix, Params* p);

// SetStopCodonWeight - STOP_WEIGHT in the whole row and column of the stop code.
// Ends   when the last letter of the alphabet is not STOP_CHARACTER (status -1)
void SetStopCodonWeight(ScoreMatrix& matrix, const Params* p);

// SetMinMaxMatrixValues - the extremes over all codes, the special ones included.
void SetMinMaxMatrixValues(ScoreMatrix& matrix);

// PrintPairscoreMatrix - the whole matrix as comment lines, scores in matrix units (truncated toward zero), the
// extremes as stored.
void PrintPairscoreMatrix(FILE* stream, const ScoreMatrix& matrix, const Params* p);

// GetDBFreqs - adds the residues of the encoded sequences seqs[0..n-1] to p->matrix->dbcount and sets dbfreq
// from p->binfo->nres (0 / 0, no number, for a database without residues, which differs from nothing and is not
// warned of). Pads are not counted. Sums that do not agree with the header are warned of on p->STDERR.
void GetDBFreqs(const SeqRec* seqs, int32_t n, Params* p);

// DumpDBFreqs - counts and frequencies of p->matrix as a table of comment lines.
void DumpDBFreqs(FILE* stream, const Params* p);

}  // namespace zelvan
