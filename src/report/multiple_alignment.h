// The query-anchored multiple alignment of one iteration's chosen hits, and the files made from it.
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// One database sequence in query coordinates. Whoever aligns it fills in the codes, ranges and significance.
struct AlignRow {
  UTvector<int8_t> aligned;  // [query stored length] residue codes where aligned, fill code elsewhere; last 0
  const SeqRec* seq = nullptr;  // encoded; not owned
  int32_t qstart = 0;           // query range of the path, 1-based, inclusive; 0 until set
  int32_t qend = 0;
  int32_t start = 0;  // the same in the database sequence
  int32_t end = 0;
  double significance = 0;
};

struct AlignData {
  const SeqRec* query = nullptr;  // the anchor, encoded; not owned
  UTvector<AlignRow> rows;        // n == rows.size()
};

// initialise_aldat - an empty record for a query, which must outlive it.
AlignData initialise_aldat(const SeqRec& query);

// addseq_to_aldat - appends a row filled with the fill code.
// Returns the row, valid until the next one is added
AlignRow& addseq_to_aldat(AlignData& aldat, const SeqRec& seq, int8_t fill);

// print_multiple_alignment - the alignment in blocks on std_out and, when PRINT_BLOCK_FILE is 1, one column a
// line on BLOCK_FILE_OUT. Letters come from p->matrix.
// Does   the blocks follow on one another every MULTIPLE_OUTPUT_LENGTH positions but show one position less:
//        the last one of each full block is left out. The number in the heading is OUTPUT_LENGTH
// Ends   when MULTIPLE_OUTPUT_LENGTH is below 1 (status -1)
void print_multiple_alignment(const AlignData& aldat, const Params* p);

// print_frag_file - query and aligned fragments as sequences of their own on FRAG_FILE_OUT, when
// PRINT_FRAG_FILE is 1. A stream that is not open is left alone, here and for the block file; write errors
// stay marked on the stream for whoever closes it.
void print_frag_file(const AlignData& aldat, const Params* p);

// destroy_aldat - releases the rows, not the sequences.
void destroy_aldat(AlignData& aldat);

}  // namespace zelvan
