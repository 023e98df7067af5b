#include "bdb/sequence_writer.h"

#include <algorithm>

#include "seq/alphabet.h"

namespace zelvan {
namespace {

constexpr int32_t LINE_LENGTH = 70;

void write_residues(FILE* stream, const SeqRec& record, const ScoreMatrix& matrix) {
  UTvector<int8_t> letters = CopySeq(record.seq, record.len);
  itoseq(letters.data(), record.len, matrix);
  const int32_t end = record.len - 1;
  for (int32_t at = 1; at < end; at += LINE_LENGTH) {
    const int32_t count = std::min(LINE_LENGTH, end - at);
    std::fwrite(&letters[static_cast<std::size_t>(at)], 1, static_cast<std::size_t>(count), stream);
    if (count == LINE_LENGTH) std::fputc('\n', stream);
  }
}

}  // namespace

UTvector<int8_t> CopySeq(const int8_t* bytes, int32_t length) {
  return UTvector<int8_t>(bytes, bytes + length);
}

void SavePirSeq(FILE* stream, const SeqRec& record, const ScoreMatrix& matrix) {
  std::fprintf(stream, ">%s\n%s\n", record.id, record.title);
  write_residues(stream, record, matrix);
  std::fputs("*\n", stream);
}

void SaveFastaSeq(FILE* stream, const SeqRec& record, const ScoreMatrix& matrix) {
  std::fprintf(stream, ">%s %s\n", record.id, record.title);
  write_residues(stream, record, matrix);
  std::fputc('\n', stream);
}

void save_sequence(FILE* stream, const SeqRec& record, const ScoreMatrix& matrix, const Params* p) {
  if (p->EXTRACT_SEQ_FORMAT == 0) SavePirSeq(stream, record, matrix);
  if (p->EXTRACT_SEQ_FORMAT == 1) SaveFastaSeq(stream, record, matrix);
}

}  // namespace zelvan
