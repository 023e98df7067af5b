#include "seq/matrix.h"

#include <algorithm>
#include <memory>

#include "seq/matrix_file.h"
#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {

ScoreMatrix* getmat(Params* p) {
  const auto matrix = std::make_shared<ScoreMatrix>();
  if (p->MATRIX_FORMAT == 0) {
    getmat_pir(*matrix, p);
  } else if (p->MATRIX_FORMAT == 1) {
    getmat_ncbi(*matrix, p);
  } else {
    UTend_input(std_err, "ERROR: Unrecognised MATRIX_FORMAT:%d\n", p->MATRIX_FORMAT);
  }
  if (p->VERBOSE != 0) PrintPairscoreMatrix(std_err, *matrix, p);
  SetStopCodonWeight(*matrix, p);
  SetMinMaxMatrixValues(*matrix);
  matrix->dbcount.assign(static_cast<std::size_t>(matrix->inlen), 0);
  matrix->dbfreq.assign(static_cast<std::size_t>(matrix->inlen), 0.0);
  p->matrix = matrix;
  return matrix.get();
}

void SetStopCodonWeight(ScoreMatrix& matrix, const Params* p) {
  const int32_t stop = matrix.inlen - 1;
  if (residue_letter(matrix, stop) != p->STOP_CHARACTER) {
    UTend_input(std_err,
                "Error in SetStopCodonWeight:  Stop characters do not match\n"
                "p->STOP_CHARACTER: %c\n matrix->indx[matrix->inlen-1] %c\n",
                p->STOP_CHARACTER, residue_letter(matrix, stop));
  }
  for (int32_t i = 0; i < matrix.inlen; ++i) {
    matrix.pairscore[i][stop] = p->STOP_WEIGHT;
    matrix.pairscore[stop][i] = p->STOP_WEIGHT;
  }
}

void SetMinMaxMatrixValues(ScoreMatrix& matrix) {
  const auto [smallest, largest] =
      std::minmax_element(matrix.pairscore.cells.begin(), matrix.pairscore.cells.end());
  matrix.minval = *smallest;
  matrix.maxval = *largest;
}

void PrintPairscoreMatrix(FILE* stream, const ScoreMatrix& matrix, const Params* p) {
  // A matrix x 0 is all zero; builds and extractions, which need no scores, accept it.
  const int32_t unit = p->PRECISION != 0 ? p->PRECISION : 1;
  std::fprintf(stream, "#Title: %s\n", matrix.title.c_str());
  std::fprintf(stream, "#Index: (%s) Length:%d\n", matrix.indx.c_str(), matrix.inlen);
  std::fputs("#  ", stream);
  for (const char letter : matrix.indx) std::fprintf(stream, "%4c", letter);
  std::fputc('\n', stream);
  for (int32_t i = 0; i < matrix.inlen; ++i) {
    std::fprintf(stream, "#%c ", residue_letter(matrix, i));
    for (int32_t j = 0; j < matrix.inlen; ++j) {
      std::fprintf(stream, "%4d", matrix.pairscore[i][j] / unit);
    }
    std::fputc('\n', stream);
  }
  std::fprintf(stream, "# Max Value in PairMatrix: %d\n", matrix.maxval);
  std::fprintf(stream, "# Min Value in PairMatrix: %d\n", matrix.minval);
}

}  // namespace zelvan
