// Sequences pulled out of a database.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"

// subset_db - mode 667: an evenly spaced sample of a text database by length, to std_out.
void subset_db(Params* p);

// extract_seqs - writes the best sequences of a search to EXTRACT_FILE: positions n-1 down to, but excluding,
// n - EXTRACT_SEQ + 1 of `order`. Does nothing when EXTRACT_SEQ is below 1.
void extract_seqs(const SeqRec* seqs, int32_t n, const int32_t* order, const ScoreMatrix& matrix, Params* p);

// ex1 - mode 100: the sequences named in a score list read from p->STDIN, to EXTRACT_FILE.
void ex1(Params* p);
