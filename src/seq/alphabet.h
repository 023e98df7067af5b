// Residue letters and residue codes: a code is a letter's position in the matrix alphabet.
#pragma once

#include <cstdint>
#include <cstdio>

#include "seq/matrix.h"
#include "seq/sequence.h"

namespace zelvan {

// seqtoi - replaces letters by codes in place.
// In     seq[0..len-2]: the leading blank and the residues, any bytes; the terminator at len-1 is left alone.
//        To convert a part of a buffer pass its length plus one; len <= 1 converts nothing
// Out    bytes that are not in the alphabet (letters are matched as they stand, case included) have the code
//        of "X", the leading blank has the gap code
// Returns seq
int8_t* seqtoi(int8_t* seq, int32_t len, const ScoreMatrix& matrix);

// itoseq - the inverse, in place: codes 0 .. inlen-1 become letters, what was unknown reads "X". Returns seq.
int8_t* itoseq(int8_t* seq, int32_t len, const ScoreMatrix& matrix);

// itoseq2 - the inverse into out_letters[0..len-2], without a terminator; the codes stay. Returns
// out_letters.
char* itoseq2(char* out_letters, const int8_t* seq, int32_t len, const ScoreMatrix& matrix);

// encode_sequences - seqtoi over the records seqs[0..n-1].
void encode_sequences(SeqRec* seqs, int32_t n, const ScoreMatrix& matrix);

// PrintMatrix - plain dump for debugging, scores as stored (x PRECISION). Row and column 0 are left out on
// purpose.
void PrintMatrix(const ScoreMatrix& matrix, FILE* stream);

}  // namespace zelvan
