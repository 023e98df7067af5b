// Reading an index file, and the checks that a database has to pass; shared by the loaders.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "bdb/index_record.h"
#include "seq/database_info.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/failure.h"
#include "util/file_record.h"
#include "util/memory.h"

namespace zelvan {

// end_damaged - ends the run over a file of a database (status -1), with what is wrong with it.
[[noreturn]] void end_damaged(const FileRec& file, const char* format, ...) UT_PRINTF(2, 3);

// bytes_of - the size of an open file.
int64_t bytes_of(FILE* stream);

// read_bulk - the first `most` bytes of an open file, fewer when it has fewer.
UTbuffer<char> read_bulk(FILE* stream, int64_t most);

// The index file and how far it has been decoded.
struct IndexBytes {
  const FileRec& file;
  const char* at;
  std::size_t left;
};

// take - copies the next bytes of the index.
// In     field: their name, for the message
// Ends   when there are no more so many (status -1)
void take(IndexBytes& index, void* out_bytes, std::size_t size, const char* field);

// take_header - decodes the header; the records follow.
// Ends   on a field that cannot be, and when there are not as many records as it says (status -1)
BdbInfo take_header(IndexBytes& index);

// check_alphabet - ends the run when codes of the database mean other letters than those of the matrix
// (status -1).
void check_alphabet(const BdbInfo& info, const ScoreMatrix& matrix);

// show_info - the header, on std_err.
void show_info(const BdbInfo& info);

// fault_of_record - why a record cannot be used, or null. Its three pieces may lie anywhere among the `bytes`
// of the sequence file.
const char* fault_of_record(const IndexRecord& record, std::size_t bytes);

// fault_of_sequence - the same for what the sequence file holds at the place of a good record.
// In     pad: the byte before the residues of the first sequence
const char* fault_of_sequence(const SeqRec& s, int8_t pad, const BdbInfo& info, const ScoreMatrix& matrix);

}  // namespace zelvan
