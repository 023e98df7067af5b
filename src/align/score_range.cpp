#include "align/score_range.h"

#include <algorithm>

#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

// The sum of the largest entries of the positions.
int64_t best_possible(const LookupTable& table) {
  UTvector<int32_t> highest(static_cast<std::size_t>(table.cols), 0);
  for (int32_t c = 0; c < table.rows; ++c) {
    const int32_t* row = table[c];
    for (std::size_t i = 0; i < highest.size(); ++i) highest[i] = std::max(highest[i], row[i]);
  }
  int64_t sum = 0;
  for (const int32_t entry : highest) sum += entry;
  return sum;
}

// The lowest penalty, 0 when none is negative.
int64_t lowest_penalty(const LookupTable& table, const ScoreMatrix& matrix, const Params* p) {
  int32_t lowest = std::min({0, p->LD_PEN, p->LI_PEN, p->FS_PEN, p->FSE_PEN});
  if (p->MODE == 210 || p->MODE == 212) {
    for (const char gap : {p->GAP_CHARACTER, p->IGAP_CHARACTER}) {
      const int32_t* row = table[residue_code(matrix, gap)];
      lowest = std::min(lowest, *std::min_element(row, row + table.cols));
    }
  }
  return lowest;
}

}  // namespace

void check_score_range(const LookupTable& table, const ScoreMatrix& matrix, const SeqRec* seqs, int32_t n,
                       const Params* p) {
  int32_t longest = 0;
  for (int32_t k = 0; k < n; ++k) longest = std::max(longest, seqs[k].len);
  const int64_t steps = int64_t{table.cols} + longest;
  const int64_t bound = best_possible(table) - lowest_penalty(table, matrix, p) * steps;
  if (bound <= INT32_MAX) return;
  UTend_input(std_err,
              "Scores of this query x PRECISION (%d) could reach %lld (at most %d):  Reduce PRECISION, the "
              "scores of the matrix or the size of negative penalties\n",
              p->PRECISION, static_cast<long long>(bound), INT32_MAX);
}

}  // namespace zelvan
