// The query-anchored multiple alignment of one iteration's chosen hits, and the files made from it.
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/memory.h"

struct AlignRow {
  UTvector<int8_t> aligned;  // [query stored length] codes in query coordinates, fill code elsewhere; last 0
  const SeqRec* seq = nullptr;  // not owned
  int32_t qstart = 0;           // query range of the path, 1-based, inclusive
  int32_t qend = 0;
  int32_t start = 0;  // the same in the database sequence
  int32_t end = 0;
  double significance = 0;
};

struct AlignData {
  const SeqRec* query = nullptr;  // the anchor, encoded; not owned
  UTvector<AlignRow> rows;        // n == rows.size()
};

AlignData initialise_aldat(const SeqRec& query);

// addseq_to_aldat - appends a row filled with the fill code and returns it.
AlignRow& addseq_to_aldat(AlignData& aldat, const SeqRec& seq, int8_t fill);

// print_multiple_alignment - blocks on std_out, and the block file when PRINT_BLOCK_FILE is 1.
void print_multiple_alignment(const AlignData& aldat, const Params* p);

// print_frag_file - the aligned fragments, when PRINT_FRAG_FILE is 1 and FRAG_FILE_OUT is open.
void print_frag_file(const AlignData& aldat, const Params* p);

void destroy_aldat(AlignData& aldat);
