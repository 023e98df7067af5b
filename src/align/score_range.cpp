#include "align/score_range.h"

#include <algorithm>
#include <numeric>

#include "driver/search_mode.h"
#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

// The sum of the largest entries of the query positions, over the codes that residues of the database have.
int64_t best_possible(const LookupTable& table, const ScoreMatrix& matrix) {
  const auto& counts = matrix.dbcount;
  const bool counted = std::any_of(counts.begin(), counts.end(), [](int64_t count) { return count > 0; });
  UTvector<int32_t> highest(static_cast<std::size_t>(table.cols), 0);
  for (int32_t c = 0; c < table.rows; ++c) {
    if (counted && counts[static_cast<std::size_t>(c)] == 0) continue;
    const int32_t* row = table[c];
    for (std::size_t i = 1; i < highest.size(); ++i) highest[i] = std::max(highest[i], row[i]);
  }
  return std::accumulate(highest.begin(), highest.end(), int64_t{0});
}

// The lowest penalty, 0 when none is negative.
int64_t lowest_penalty(const LookupTable& table, const ScoreMatrix& matrix, const Params* p) {
  int32_t lowest = std::min({0, p->LD_PEN, p->LI_PEN, p->FS_PEN, p->FSE_PEN});
  if (decode_mode(p->MODE).gaps_by_position) {
    for (const char gap : {p->GAP_CHARACTER, p->IGAP_CHARACTER}) {
      const int32_t* row = table[residue_code(matrix, gap)];
      lowest = std::min(lowest, *std::min_element(row, row + table.cols));
    }
  }
  return lowest;
}

int64_t score_bound(const LookupTable& table, const ScoreMatrix& matrix, int32_t longest, const Params* p) {
  if (longest <= 2) return 0;
  const int64_t steps = int64_t{table.cols} + longest;
  return best_possible(table, matrix) - lowest_penalty(table, matrix, p) * steps;
}

}  // namespace

bool scores_fit(const LookupTable& table, const ScoreMatrix& matrix, int32_t longest, const Params* p) {
  return score_bound(table, matrix, longest, p) <= INT32_MAX;
}

void check_score_range(const LookupTable& table, const ScoreMatrix& matrix, const SeqRec* seqs, int32_t n,
                       const Params* p) {
  int32_t longest = 0;
  for (int32_t k = 0; k < n; ++k) longest = std::max(longest, seqs[k].len);
  if (scores_fit(table, matrix, longest, p)) return;
  UTend_input(std_err,
              "Scores of this query x PRECISION (%d) could reach %lld (at most %d):  Reduce PRECISION, the "
              "scores of the matrix, POSWGTFAC or the size of negative penalties\n",
              p->PRECISION, static_cast<long long>(score_bound(table, matrix, longest, p)), INT32_MAX);
}

}  // namespace zelvan
