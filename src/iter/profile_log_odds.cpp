#include "iter/profile_log_odds.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "driver/progress.h"
#include "driver/search_mode.h"
#include "iter/profile_entry.h"
#include "iter/residue_model.h"
#include "iter/row_weights.h"
#include "util/streams.h"

namespace zelvan {
namespace {

constexpr double BETA = 10.0;            // weight of the matrix's expectation, in observations
constexpr double FIXED_ALPHA = 2.0;      // weight of what was observed in method 1
constexpr double OWN_COMPOSITION = 0.5;  // part of the profile's own composition in its background
constexpr double USUAL_COLUMNS = 50.0;   // columns of the usual composition that count as the profile's own
constexpr double SURE = 0.1;             // part of PROBCUT2 below which a row always counts
constexpr double SURE_ENOUGH = 20.0;     // sure sequences that halve the PROBCUT2 of the others
constexpr double GAP_BACKGROUND = 0.03;  // frequency of a gap at an average position
constexpr double GAP_BETA = 10.0;        // weight of that average, in observations
constexpr double GAP_MOST = 0.7;         // a penalty is lowered or raised by at most this part of it

constexpr int32_t TRACE_WEIGHTS = 20000;  // VERBOSE

constexpr const char* SCORE_KEYS = "PRECISION, POSWGTFAC or the scores of the matrix";
constexpr const char* PENALTY_KEYS = "PRECISION, PEN_FACTOR, LD_PEN or LI_PEN";

// What was seen at one query position.
struct Column {
  UTvector<double> frequency;  // [code] observed, summing to 1 over the ordinary residues
  double observed = 0;         // part of the weight that fell on residues
  double gaps = 0;             // part that fell on gaps
};

void add_observation(Column& column, const ResidueModel& model, int32_t code, double weight) {
  for (const AmbiguousCode& ambiguous : model.ambiguous) {
    if (ambiguous.code != code) continue;
    double total = 0;
    for (const int32_t member : ambiguous.members)
      total += model.background[static_cast<std::size_t>(member)];
    for (const int32_t member : ambiguous.members) {
      const auto at = static_cast<std::size_t>(member);
      column.frequency[at] += weight * model.background[at] / total;
    }
    return;
  }
  column.frequency[static_cast<std::size_t>(code)] += weight;
}

// [row] whether its residues are observations. Rows of one sequence stand side by side.
UTvector<char> rows_that_count(const UTvector<AlignRow>& rows, double probcut2) {
  const double sure = SURE * probcut2;
  int32_t nsure = 0;
  const SeqRec* last = nullptr;
  for (const AlignRow& row : rows) {
    if (row.significance > sure || row.seq == last) continue;
    ++nsure;
    last = row.seq;
  }
  const double most = std::max(sure, probcut2 / (1.0 + nsure / SURE_ENOUGH));
  UTvector<char> counts(rows.size());
  std::transform(rows.begin(), rows.end(), counts.begin(),
                 [&](const AlignRow& row) { return static_cast<char>(row.significance <= most); });
  return counts;
}

Column observe(const RowWeights& weights, const UTvector<char>& counts, int32_t i, const AlignData& aldat,
               const ResidueModel& model, int32_t ncodes, int8_t gap) {
  Column column;
  column.frequency.assign(static_cast<std::size_t>(ncodes), 0.0);
  add_observation(column, model, aldat.query->seq[i], weights.query);
  for (std::size_t r = 0; r < aldat.rows.size(); ++r) {
    if (weights.active[r] == 0 || counts[r] == 0) continue;
    add_observation(column, model, aldat.rows[r].aligned[static_cast<std::size_t>(i)], weights.row[r]);
  }
  column.gaps = column.frequency[static_cast<std::size_t>(gap)];
  for (const int32_t a : model.residues) column.observed += column.frequency[static_cast<std::size_t>(a)];
  return column;
}

// ratio[code] = Q / p of the ordinary residues; false when the sums are not usable.
bool mix(const Column& column, const ResidueModel& model, double alpha, const Params* p, double* out_ratio) {
  double sumposwgts = 0, sumbgwgts = 0;
  for (const int32_t c : model.residues) {
    const auto at = static_cast<std::size_t>(c);
    double expected = 0;
    for (const int32_t b : model.residues) {
      expected += column.frequency[static_cast<std::size_t>(b)] / column.observed * model.odds[b][c];
    }
    const double seen = column.frequency[at] / column.observed / model.background[at];
    out_ratio[c] = (alpha * seen + BETA * expected) / (alpha + BETA);
    sumbgwgts += model.background[at] * expected;
    if (p->POSWGTFAC > 0) sumposwgts += model.background[at] * seen;
  }
  if (p->VERBOSE == TRACE_WEIGHTS) {
    std::fprintf(std_err, "In calc_profile2: sumbgwgts %g\n", sumbgwgts);
    if (p->POSWGTFAC > 0) std::fprintf(std_err, "In calc_profile2: sumposwgts %g\n", sumposwgts);
  }
  if (!(sumbgwgts > 0)) {
    std::fprintf(std_err, "Problem with sumbgwgts in calc_profile2: %g\n", sumbgwgts);
    return false;
  }
  if (p->POSWGTFAC > 0 && !(sumposwgts > 0)) {
    std::fprintf(std_err, "Problem with sumposwgts in calc_profile2: %g\n", sumposwgts);
    return false;
  }
  return true;
}

// The ratios of one profile, and the query positions that have some.
struct Ratios {
  Table<double> ratio;  // [query position][code]
  UTvector<int32_t> positions;
};

// Takes the ratios against a background that leans towards the profile's own composition: residues that are
// common all over it, as in membrane proteins and coiled coils, then tell less.
void correct_composition(const ResidueModel& model, Ratios& ratios) {
  UTvector<double> own(model.background.size(), 0.0);
  double total = 0;
  for (const int32_t c : model.residues) {
    const auto at = static_cast<std::size_t>(c);
    double columns = USUAL_COLUMNS;
    for (const int32_t i : ratios.positions) columns += ratios.ratio[i][c];
    own[at] = columns * model.background[at];
    total += own[at];
  }
  for (const int32_t c : model.residues) {
    const auto at = static_cast<std::size_t>(c);
    const double relative = own[at] / total / model.background[at];
    for (const int32_t i : ratios.positions) {
      ratios.ratio[i][c] /= 1.0 - OWN_COMPOSITION + OWN_COMPOSITION * relative;
    }
  }
}

// Entries are whole multiples of this.
int32_t entry_unit(const SearchMode& mode, const ScoreMatrix& matrix, const Params* p) {
  if (mode.gaps_by_position) return 1;  // their penalties have no common divisor
  int64_t unit = std::max(1, p->PRECISION / 2);
  unit = std::gcd(unit, std::gcd(int64_t{p->LD_PEN}, mode.affine ? int64_t{p->LI_PEN} : 0));
  for (const int32_t score : matrix.pairscore.cells) unit = std::gcd(unit, int64_t{score});
  return static_cast<int32_t>(unit);
}

void write_column(const double* ratio, const ResidueModel& model, int32_t unit, int32_t i, LookupTable& table,
                  const Params* p) {
  const auto write = [&](int32_t c, double x) {
    if (x <= 0) return;  // a score so low that its odds vanish: the matrix says it better
    const double value = p->PRECISION * std::log(x) / model.lambda * p->POSWGTFAC;
    table[c][i] = profile_entry(unit * std::round(value / unit), i, SCORE_KEYS, p);
  };
  for (const int32_t c : model.residues) write(c, ratio[c]);
  for (const AmbiguousCode& ambiguous : model.ambiguous) {
    double q = 0, background = 0;
    for (const int32_t member : ambiguous.members) {
      const auto at = static_cast<std::size_t>(member);
      q += ratio[member] * model.background[at];
      background += model.background[at];
    }
    write(ambiguous.code, q / background);
  }
}

void trace_weights(const RowWeights& weights, int32_t i) {
  std::fprintf(std_err, "i:%d j:%d querywgt:%f\n", i, 0, weights.query);
  for (std::size_t j = 0; j < weights.row.size(); ++j) {
    if (weights.active[j] == 0) continue;
    std::fprintf(std_err, "++i:%d j:%d seqwgt[j]:%f\n", i, static_cast<int32_t>(j), weights.row[j]);
  }
  std::fprintf(std_err, "i:%d j:%d sumwgt:%f\n", i, static_cast<int32_t>(weights.row.size()), weights.sum);
}

// The log-odds of a gap, matrix units x PRECISION, within GAP_MOST of the penalty that it will be taken from.
double gap_log_odds(double gaps, double observations, double lambda, double penalty, const Params* p) {
  const double frequency = (observations * gaps + GAP_BETA * GAP_BACKGROUND) / (observations + GAP_BETA);
  const double value = p->PRECISION * std::log(frequency / GAP_BACKGROUND) / lambda * p->POSWGTFAC;
  const double most = GAP_MOST * std::fabs(penalty);
  return std::clamp(value, -most, most);
}

// The gap row holds log-odds of gaps on entry, penalties on return.
void set_variable_penalties(const SearchMode& mode, const ScoreMatrix& matrix, int32_t npositions,
                            LookupTable& table, const Params* p) {
  int32_t* gap_row = table[residue_code(matrix, p->GAP_CHARACTER)];
  int32_t* opening_row = table[residue_code(matrix, p->IGAP_CHARACTER)];
  const double ratio = p->LI_PEN != 0 ? static_cast<double>(p->LD_PEN) / p->LI_PEN : 1.0;
  const auto entry = [&](double value, int32_t i) { return profile_entry(value, i + 1, PENALTY_KEYS, p); };
  for (int32_t i = 0; i < npositions; ++i) {
    const double lowered = p->PEN_FACTOR * gap_row[i];
    if (!mode.affine) {
      gap_row[i] = entry(p->LD_PEN - lowered, i);
    } else {
      opening_row[i] = entry(p->LI_PEN - lowered, i);
      gap_row[i] = entry(p->LD_PEN - lowered * ratio, i);
    }
  }
}

}  // namespace

void calc_profile2(const ScoreMatrix& matrix, LookupTable& table, const AlignData& aldat, const Params* p) {
  progress("About to call dmlook\n", p);
  const SeqRec& query = *aldat.query;
  const int8_t gap = residue_code(matrix, p->GAP_CHARACTER);
  const SearchMode mode = decode_mode(p->MODE);
  const double penalty = mode.affine ? p->LI_PEN : p->LD_PEN;
  const int32_t npositions = query.len - 1;
  const ResidueModel model = make_residue_model(matrix, p->PRECISION);
  table = mlookgap(query.seq, query.len, matrix, p->LD_PEN, p->LI_PEN, p);
  if (mode.gaps_by_position) std::fill_n(table[gap], npositions, 0);

  const UTvector<char> counts = rows_that_count(aldat.rows, p->PROBCUT2);
  RowWeights weights = start_row_weights(aldat, matrix);
  Ratios ratios = {make_table<double>(npositions, matrix.inlen, 0.0), {}};
  for (int32_t i = 1; i < npositions; ++i) {
    move_row_weights(weights, i, aldat, matrix, p);
    if (weights.nactive == 0) continue;
    if (p->VERBOSE == TRACE_WEIGHTS) trace_weights(weights, i);
    const Column column = observe(weights, counts, i, aldat, model, matrix.inlen, gap);
    if (mode.gaps_by_position) {
      // The kernels read the penalties of query position i from entry i - 1.
      const double log_odds = gap_log_odds(column.gaps, weights.mean_distinct, model.lambda, penalty, p);
      table[gap][i - 1] = profile_entry(log_odds, i, SCORE_KEYS, p);
    }
    if (!(column.observed > 0)) continue;
    const double alpha = p->PROFILE_WEIGHT_METHOD == 1
                             ? FIXED_ALPHA
                             : std::max(0.0, weights.mean_distinct * column.observed - 1.0);
    if (mix(column, model, alpha, p, ratios.ratio[i])) ratios.positions.push_back(i);
  }
  correct_composition(model, ratios);
  const int32_t unit = entry_unit(mode, matrix, p);
  for (const int32_t i : ratios.positions) write_column(ratios.ratio[i], model, unit, i, table, p);
  progress("About to call FreeDLookup\n", p);
  if (mode.gaps_by_position) set_variable_penalties(mode, matrix, npositions, table, p);
  if (p->VERBOSE != 0) {
    std::fputs("About to return from calc_profile2\n", std_err);
    std::fflush(std_err);
  }
}

}  // namespace zelvan
