// The residue composition of the database, kept in the matrix because its alphabet numbers the residues.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"

namespace zelvan {

// How often each byte stands for a residue, as letter or as code.
using ByteCounts = std::array<int64_t, 256>;

// count_residues - adds the residues of seqs[0..n-1], pads not counted, to `counts`.
void count_residues(const SeqRec* seqs, int32_t n, ByteCounts& counts);

// codes_from_letters - the counts of letters as counts of their codes.
ByteCounts codes_from_letters(const ByteCounts& letters, const ScoreMatrix& matrix);

// GetDBFreqs - adds the residues of the encoded sequences seqs[0..n-1] to p->matrix->dbcount and sets dbfreq
// from p->binfo->nres (NaN for a database without residues, without a warning of the sum). Pads are not
// counted. Sums that do not agree with the header are warned of on p->STDERR.
void GetDBFreqs(const SeqRec* seqs, int32_t n, Params* p);

// add_frequencies - the same from counts of codes.
void add_frequencies(const ByteCounts& codes, Params* p);

// DumpDBFreqs - counts and frequencies of p->matrix as a table of comment lines.
void DumpDBFreqs(FILE* stream, const Params* p);

}  // namespace zelvan
