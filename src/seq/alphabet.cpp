#include "seq/alphabet.h"

namespace zelvan {

int8_t* seqtoi(int8_t* seq, int32_t len, const ScoreMatrix& matrix) {
  for (int32_t i = 0; i <= len - 2; ++i) seq[i] = residue_code(matrix, seq[i]);
  return seq;
}

int8_t* itoseq(int8_t* seq, int32_t len, const ScoreMatrix& matrix) {
  for (int32_t i = 0; i <= len - 2; ++i) seq[i] = static_cast<int8_t>(residue_letter(matrix, seq[i]));
  return seq;
}

char* itoseq2(char* out_letters, const int8_t* seq, int32_t len, const ScoreMatrix& matrix) {
  for (int32_t i = 0; i <= len - 2; ++i) out_letters[i] = residue_letter(matrix, seq[i]);
  return out_letters;
}

void encode_sequences(SeqRec* seqs, int32_t n, const ScoreMatrix& matrix) {
  for (int32_t i = 0; i < n; ++i) seqtoi(seqs[i].seq, seqs[i].len, matrix);
}

void PrintMatrix(const ScoreMatrix& matrix, FILE* stream) {
  std::fprintf(stream, "TITLE:%s\n", matrix.title.c_str());
  std::fprintf(stream, "INDEX:%s\n", matrix.indx.c_str());
  std::fprintf(stream, "INLEN:%d\n", matrix.inlen);
  for (int32_t i = 1; i < matrix.inlen; ++i) {
    for (int32_t j = 1; j < matrix.inlen; ++j) std::fprintf(stream, "%3d", matrix.pairscore[i][j]);
    std::fputc('\n', stream);
  }
}

}  // namespace zelvan
