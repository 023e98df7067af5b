// The residue composition of the database, kept in the matrix because its alphabet numbers the residues.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/sequence.h"

namespace zelvan {

// GetDBFreqs - adds the residues of the encoded sequences seqs[0..n-1] to p->matrix->dbcount and sets dbfreq
// from p->binfo->nres (NaN for a database without residues, without a warning of the sum). Pads are not
// counted. Sums that do not agree with the header are warned of on p->STDERR.
void GetDBFreqs(const SeqRec* seqs, int32_t n, Params* p);

// DumpDBFreqs - counts and frequencies of p->matrix as a table of comment lines.
void DumpDBFreqs(FILE* stream, const Params* p);

}  // namespace zelvan
