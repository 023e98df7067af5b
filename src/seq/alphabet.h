// Residue letters and residue codes: a code is a letter's position in the matrix alphabet.
#pragma once

#include <cstdint>
#include <cstdio>

#include "seq/matrix.h"

// seqtoi - replaces letters by codes in place at positions 0 .. len-2; returns the buffer. Bytes outside the
// alphabet get the code of "X". To convert a part of a buffer pass its length plus one.
int8_t* seqtoi(int8_t* seq, int32_t len, const ScoreMatrix& matrix);

// itoseq - the inverse, in place.
int8_t* itoseq(int8_t* seq, int32_t len, const ScoreMatrix& matrix);

// itoseq2 - the inverse into out_letters[0 .. len-2]; no terminator, the codes stay. Returns out_letters.
char* itoseq2(char* out_letters, const int8_t* seq, int32_t len, const ScoreMatrix& matrix);

// encode_sequences - seqtoi over all records.
void encode_sequences(SeqRec* seqs, int32_t n, const ScoreMatrix& matrix);

// PrintMatrix - plain dump for debugging; row and column 0 are left out on purpose.
void PrintMatrix(const ScoreMatrix& matrix, FILE* stream);
