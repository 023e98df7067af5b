#include "iter/profile_counts.h"

#include <algorithm>
#include <cmath>

#include "iter/profile_entry.h"
#include "util/streams.h"

namespace zelvan {
namespace {

void average_pair_scores(const ScoreMatrix& matrix, const LookupTable& count, const UTvector<int32_t>& total,
                         LookupTable& table) {
  const auto npositions = static_cast<int32_t>(total.size());
  for (int32_t i = 0; i < npositions; ++i) {
    for (int32_t c = 0; c < matrix.inlen; ++c) {
      int64_t sum = 0;
      for (int32_t k = 0; k < matrix.inlen; ++k) sum += int64_t{matrix.pairscore[c][k]} * count[k][i];
      table[c][i] = static_cast<int32_t>(sum / total[static_cast<std::size_t>(i)]);
    }
  }
}

void set_gap_row(const int32_t* gaps, const UTvector<int32_t>& total, int32_t* out_row, const Params* p) {
  for (std::size_t i = 0; i < total.size(); ++i) {
    if (gaps[i] <= 0) continue;
    const double n = gaps[i];
    const double log_odds = std::log(n / (n + total[i]));
    out_row[i] = profile_entry(log_odds * p->PRECISION, static_cast<int32_t>(i), "PRECISION or PROBCUT2", p);
  }
}

void stretch_to_matrix_extremes(const ScoreMatrix& matrix, int32_t npositions, LookupTable& table) {
  int32_t highest = table[1][1], lowest = table[1][1];
  for (int32_t c = 0; c < matrix.inlen; ++c) {
    for (int32_t i = 0; i < npositions; ++i) {
      highest = std::max(highest, table[c][i]);
      lowest = std::min(lowest, table[c][i]);
    }
  }
  for (int32_t c = 0; c < matrix.inlen; ++c) {
    for (int32_t i = 0; i < npositions; ++i) {
      const double x = table[c][i];
      if (x < 0) table[c][i] = static_cast<int32_t>(x / lowest * matrix.minval);
      if (x > 0) table[c][i] = static_cast<int32_t>(x / highest * matrix.maxval);
    }
  }
}

}  // namespace

UTvector<int32_t> calc_profile(const int8_t* query, int32_t qlen, const ScoreMatrix& matrix,
                               LookupTable& table, LookupTable& count, const Params* p) {
  const int32_t npositions = qlen - 1;
  UTvector<int32_t> total(static_cast<std::size_t>(npositions), 0);
  for (int32_t i = 0; i < npositions; ++i) {
    ++count[query[i]][i];
    for (int32_t c = 0; c < matrix.inlen; ++c) total[static_cast<std::size_t>(i)] += count[c][i];
  }
  average_pair_scores(matrix, count, total, table);
  const int8_t gap = residue_code(matrix, p->GAP_CHARACTER);
  set_gap_row(count[gap], total, table[gap], p);
  stretch_to_matrix_extremes(matrix, npositions, table);
  if (p->VERBOSE != 0) {
    std::fputs("About to return from calc_profile\n", std_err);
    std::fflush(std_err);
  }
  return total;
}

}  // namespace zelvan
