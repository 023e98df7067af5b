#include "seq/composition.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

#include "seq/database_info.h"
#include "seq/matrix.h"

namespace zelvan {

void count_residues(const SeqRec* seqs, int32_t n, ByteCounts& counts) {
  // Two neighbours are counted at once. Of the many pairs of bytes only those of letters, or of codes, occur,
  // so that the part of the table in use stays small; in 64 bits its rows would contend for the same places
  // of the cache. What is in memory has no more residues than 32 bits count.
  UTvector<uint32_t> pairs(std::size_t{1} << 16, 0);
  for (int32_t s = 0; s < n; ++s) {
    const int8_t* const first = seqs[s].seq + 1;
    const int32_t count = residues(seqs[s]);
    int32_t i = 0;
    for (; i + 8 <= count; i += 8) {
      uint64_t four;
      std::memcpy(&four, first + i, sizeof four);
      ++pairs[four & 0xFFFF];
      ++pairs[four >> 16 & 0xFFFF];
      ++pairs[four >> 32 & 0xFFFF];
      ++pairs[four >> 48];
    }
    for (; i < count; ++i) ++counts[static_cast<uint8_t>(first[i])];
  }
  for (std::size_t pair = 0; pair < pairs.size(); ++pair) {
    counts[pair & 0xFF] += pairs[pair];
    counts[pair >> 8] += pairs[pair];
  }
}

ByteCounts codes_from_letters(const ByteCounts& letters, const ScoreMatrix& matrix) {
  ByteCounts codes{};
  for (std::size_t letter = 0; letter < letters.size(); ++letter) {
    const int8_t code = residue_code(matrix, static_cast<int>(letter));
    codes[static_cast<uint8_t>(code)] += letters[letter];
  }
  return codes;
}

void GetDBFreqs(const SeqRec* seqs, int32_t n, Params* p) {
  ByteCounts counts{};
  count_residues(seqs, n, counts);
  add_frequencies(counts, p);
}

void add_frequencies(const ByteCounts& codes, Params* p) {
  ScoreMatrix& matrix = *p->matrix;
  const int64_t nres = p->binfo->nres;
  double frequency_sum = 0;
  int64_t count_sum = 0;
  for (std::size_t code = 0; code < matrix.dbcount.size(); ++code) {
    matrix.dbcount[code] += codes[code];
    // 0 / 0 has a sign on some machines, and would print as "-nan" there.
    const bool undefined = nres == 0 && matrix.dbcount[code] == 0;
    matrix.dbfreq[code] = undefined ? std::numeric_limits<double>::quiet_NaN()
                                    : static_cast<double>(matrix.dbcount[code]) / static_cast<double>(nres);
    frequency_sum += matrix.dbfreq[code];
    count_sum += matrix.dbcount[code];
  }
  if (std::fabs(frequency_sum - 1) > 1e-8) {
    std::fprintf(p->STDERR, "# Warning: GetDBFreqs fchk = %g\n", frequency_sum);
  }
  if (count_sum != nres) {
    std::fprintf(p->STDERR, "# Warning: GetDBFreqs cchk = %lld\n", static_cast<long long>(count_sum));
  }
}

void DumpDBFreqs(FILE* stream, const Params* p) {
  const ScoreMatrix& matrix = *p->matrix;
  std::fputs("# Frequency Table for database\n", stream);
  std::fputs("# Residue            counts         Frequency\n", stream);
  for (int32_t code = 0; code < matrix.inlen; ++code) {
    const auto at = static_cast<std::size_t>(code);
    std::fprintf(stream, "#   %c            %10lld               %g\n", residue_letter(matrix, code),
                 static_cast<long long>(matrix.dbcount[at]), matrix.dbfreq[at]);
  }
}

}  // namespace zelvan
