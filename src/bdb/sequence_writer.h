// Writing sequences to a file, from codes back to letters.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// CopySeq - a copy of `length` bytes.
UTvector<int8_t> CopySeq(const int8_t* bytes, int32_t length);

// SavePirSeq, SaveFastaSeq - one sequence with header and residue lines.
// In     record.seq: codes; unchanged
// Does   a newline follows every 70th residue, also when it is the last; then "*" and a newline (PIR), or a
//        newline (FASTA)
void SavePirSeq(FILE* stream, const SeqRec& record, const ScoreMatrix& matrix);
void SaveFastaSeq(FILE* stream, const SeqRec& record, const ScoreMatrix& matrix);

// save_sequence - the one of EXTRACT_SEQ_FORMAT: 0 PIR, 1 FASTA, nothing with any other value.
void save_sequence(FILE* stream, const SeqRec& record, const ScoreMatrix& matrix, const Params* p);

}  // namespace zelvan
