#include "iter/row_weights.h"

#include <algorithm>

#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

int32_t row_count(const AlignData& aldat) {
  return static_cast<int32_t>(aldat.rows.size());
}

const AlignRow& row_at(const AlignData& aldat, int32_t r) {
  return aldat.rows[static_cast<std::size_t>(r)];
}

// Sets the rows that cover position i and their common range; false when they are those of the last position.
bool find_covering_rows(RowWeights& weights, int32_t i, const AlignData& aldat) {
  bool changed = false;
  int32_t ncovering = 0, start = 0, end = aldat.query->len;
  for (int32_t r = 0; r < row_count(aldat); ++r) {
    const AlignRow& row = row_at(aldat, r);
    char& covering = weights.covering[static_cast<std::size_t>(r)];
    const char covers = row.qstart <= i && i <= row.qend ? 1 : 0;
    changed = changed || covers != covering;
    covering = covers;
    if (covers == 0) continue;
    ++ncovering;
    start = std::max(start, row.qstart);
    end = std::min(end, row.qend);
  }
  if (!changed) return false;
  weights.nactive = ncovering;
  weights.range_start = start;
  weights.range_end = end;
  return true;
}

int32_t identities(const int8_t* a, const int8_t* b, int32_t length, int8_t gap) {
  int32_t n = 0;
  for (int32_t k = 0; k < length; ++k) n += (a[k] == b[k]) & (a[k] != gap);
  return n;
}

// Whether at least `threshold` of the positions are identical; most pairs fail after a block or two.
bool resembles(const int8_t* a, const int8_t* b, int32_t length, int8_t gap, double threshold) {
  constexpr int32_t BLOCK = 32;
  int32_t same = 0;
  for (int32_t k = 0; k < length; k += BLOCK) {
    const int32_t width = std::min(BLOCK, length - k);
    same += identities(a + k, b + k, width, gap);
    const int32_t possible = same + length - k - width;
    if (static_cast<double>(possible) / length < threshold) return false;
  }
  return true;
}

// The query against all rows, then every row against those behind it, those already switched off included.
void filter_redundant(RowWeights& weights, const AlignData& aldat, int8_t gap, double threshold) {
  const auto against = [&](const int8_t* reference, int32_t first_row) {
    pidfilter(reference, aldat, first_row, weights.active, weights.range_start, weights.range_end,
              weights.nactive, gap, threshold);
  };
  against(aldat.query->seq, 0);
  for (int32_t k = 0; k + 1 < row_count(aldat); ++k) against(row_at(aldat, k).aligned.data(), k + 1);
}

void count_row(Table<int32_t>& count, const AlignRow& row, int32_t step) {
  for (int32_t k = row.qstart; k <= row.qend; ++k) count[k][row.aligned[static_cast<std::size_t>(k)]] += step;
}

// What each code of each column of the common range adds to the weight of a sequence that has it.
void weigh_columns(RowWeights& weights, int8_t gap) {
  int64_t distinct_sum = 0;
  for (int32_t k = weights.range_start; k <= weights.range_end; ++k) {
    const int32_t* count = weights.count[k];
    double* contribution = weights.contribution[k];
    int32_t distinct = 0;
    for (int32_t c = 0; c < weights.count.cols; ++c) distinct += count[c] > 0;
    for (int32_t c = 0; c < weights.count.cols; ++c) {
      contribution[c] = count[c] > 0 ? 1.0 / (static_cast<double>(count[c]) * distinct) : 0.0;
    }
    distinct_sum += distinct - (count[gap] > 0);
  }
  weights.mean_distinct = static_cast<double>(distinct_sum) / (weights.range_end - weights.range_start + 1);
}

double weight_of(const RowWeights& weights, const int8_t* codes) {
  double sum = 0;
  for (int32_t k = weights.range_start; k <= weights.range_end; ++k) sum += weights.contribution[k][codes[k]];
  return sum;
}

void weigh_sequences(RowWeights& weights, const AlignData& aldat) {
  weights.query = weight_of(weights, aldat.query->seq);
  weights.sum = weights.query;
  for (int32_t r = 0; r < row_count(aldat); ++r) {
    const auto at = static_cast<std::size_t>(r);
    weights.row[at] = weights.active[at] != 0 ? weight_of(weights, row_at(aldat, r).aligned.data()) : 0.0;
    weights.sum += weights.row[at];
  }
  weights.query /= weights.sum;
  for (double& weight : weights.row) weight /= weights.sum;
}

}  // namespace

void pidfilter(const int8_t* reference, const AlignData& aldat, int32_t first_row, UTvector<char>& active,
               int32_t range_start, int32_t range_end, int32_t& nactive, int8_t gap, double threshold) {
  const int32_t range_length = range_end - range_start + 1;
  for (int32_t r = first_row; r < row_count(aldat); ++r) {
    char& on = active[static_cast<std::size_t>(r)];
    if (on == 0) continue;
    const int8_t* aligned = row_at(aldat, r).aligned.data();
    if (!resembles(reference + range_start, aligned + range_start, range_length, gap, threshold)) continue;
    on = 0;
    --nactive;
    if (nactive < 1) UTend_stream(std_err, "Error in pidfilter: *nactive = %d\n", nactive);
  }
}

RowWeights start_row_weights(const AlignData& aldat, const ScoreMatrix& matrix) {
  RowWeights weights;
  weights.row.assign(aldat.rows.size(), 0.0);
  weights.active.assign(aldat.rows.size(), 0);
  weights.covering.assign(aldat.rows.size(), 0);
  weights.count = make_table<int32_t>(aldat.query->len, matrix.inlen, 0);
  weights.contribution = make_table<double>(aldat.query->len, matrix.inlen, 0.0);
  for (int32_t k = 1; k <= residues(*aldat.query); ++k) weights.count[k][aldat.query->seq[k]] = 1;
  return weights;
}

void move_row_weights(RowWeights& weights, int32_t i, const AlignData& aldat, const ScoreMatrix& matrix,
                      const Params* p) {
  if (!find_covering_rows(weights, i, aldat)) return;
  const int8_t gap = residue_code(matrix, p->GAP_CHARACTER);
  const UTvector<char> counted = weights.active;
  weights.active = weights.covering;
  const int32_t length = weights.range_end - weights.range_start + 1;
  if (weights.nactive > 0 && length < 1) {
    std::fprintf(std_err, "Disaster in calc_profile2 - range invalid: %d\n", length);
    weights.active.assign(weights.active.size(), 0);
    weights.nactive = 0;
  }
  if (weights.nactive > 0 && p->PIDTHRESH < 1.0) filter_redundant(weights, aldat, gap, p->PIDTHRESH);
  for (int32_t r = 0; r < row_count(aldat); ++r) {
    const int32_t step = weights.active[static_cast<std::size_t>(r)] - counted[static_cast<std::size_t>(r)];
    if (step != 0) count_row(weights.count, row_at(aldat, r), step);
  }
  if (weights.nactive == 0) return;
  weigh_columns(weights, gap);
  weigh_sequences(weights, aldat);
}

}  // namespace zelvan
