#include "seq/composition.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "seq/database_info.h"
#include "seq/matrix.h"

namespace zelvan {

void GetDBFreqs(const SeqRec* seqs, int32_t n, Params* p) {
  ScoreMatrix& matrix = *p->matrix;
  const int32_t nres = p->binfo->nres;
  // Even and odd positions are counted apart: the additions for a repeated residue would wait for each other.
  std::array<std::array<int32_t, 256>, 2> counts{};
  for (int32_t s = 0; s < n; ++s) {
    for (int32_t i = 1; i <= residues(seqs[s]); ++i) {
      ++counts[static_cast<std::size_t>(i & 1)][static_cast<uint8_t>(seqs[s].seq[i])];
    }
  }
  double frequency_sum = 0;
  int64_t count_sum = 0;
  for (std::size_t code = 0; code < matrix.dbcount.size(); ++code) {
    matrix.dbcount[code] += counts[0][code] + counts[1][code];
    // 0 / 0 has a sign on some machines, and would print as "-nan" there.
    const bool undefined = nres == 0 && matrix.dbcount[code] == 0;
    matrix.dbfreq[code] = undefined ? std::numeric_limits<double>::quiet_NaN()
                                    : static_cast<double>(matrix.dbcount[code]) / nres;
    frequency_sum += matrix.dbfreq[code];
    count_sum += matrix.dbcount[code];
  }
  if (std::fabs(frequency_sum - 1) > 1e-8) {
    std::fprintf(p->STDERR, "# Warning: GetDBFreqs fchk = %g\n", frequency_sum);
  }
  if (count_sum != nres) {
    std::fprintf(p->STDERR, "# Warning: GetDBFreqs cchk = %d\n", static_cast<int32_t>(count_sum));
  }
}

void DumpDBFreqs(FILE* stream, const Params* p) {
  const ScoreMatrix& matrix = *p->matrix;
  std::fputs("# Frequency Table for database\n", stream);
  std::fputs("# Residue            counts         Frequency\n", stream);
  for (int32_t code = 0; code < matrix.inlen; ++code) {
    const auto at = static_cast<std::size_t>(code);
    std::fprintf(stream, "#   %c            %10d               %g\n", residue_letter(matrix, code),
                 matrix.dbcount[at], matrix.dbfreq[at]);
  }
}

}  // namespace zelvan
