#include "report/score_list.h"

#include <algorithm>
#include <cstdio>

#include "util/failure.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr int32_t END_RULE_WIDTH = 54;

// A cut-off is single precision, the value double: compared as doubles. NaN never passes.
bool within(float cutoff, double value) {
  return static_cast<double>(cutoff) >= value;
}

void print_list_start(const SeqRec& query, const ScoreMatrix& matrix, const LineFit* z_fit_opt,
                      const Params* p) {
  require_precision(p);
  if (p->SHOW_BLURB != 0) dump_info(std_out, query, matrix, z_fit_opt, p);
}

void print_list_end(RunTimes& times, const Params* p) {
  times[TIME_SCORES] = UT_get_times(1);
  if (p->SHOW_BLURB != 0) {
    std::fputs("# End_Scores: ", std_out);
    UTpline(std_out, '-', END_RULE_WIDTH);
  }
}

void print_rank(int32_t rank, const Params* p) {
  if (p->SHOW_TITLES != 0) std::fprintf(std_out, "%4d ", rank);
}

void print_names(const SeqRec& seq, const Params* p) {
  UTpTITLEstring(std_out, seq.id, p->SHOW_IDENT_WIDTH, seq.ilen);
  std::fputc(' ', std_out);
  if (p->SHOW_TITLES != 0) UTpTITLEstring(std_out, seq.title, p->SHOW_TITLES_WIDTH, seq.tlen);
}

void print_plain_line(int32_t rank, int32_t k, const ResultRec& results, const Params* p) {
  print_rank(rank, p);
  std::fprintf(std_out, "%d ", whole_score(results.scores[k], p));
  print_names(results.seqs[k], p);
  if (p->SHOW_LEN != 0) std::fprintf(std_out, "  %d", residues(results.seqs[k]));
  std::fputc('\n', std_out);
}

// Positions of the order array from n-1 down to this one are considered for the list.
int32_t last_listed_position(int32_t n, const Params* p) {
  constexpr int32_t NO_LIMIT = -1;
  if (p->MAX_NOUT == NO_LIMIT) return 0;
  const int64_t beyond = static_cast<int64_t>(n) - p->MAX_NOUT - 1;
  return static_cast<int32_t>(std::clamp<int64_t>(beyond, -1, n)) + 1;
}

// Calls print_line(rank, k) for every listed sequence k that passes, best first; returns how many did.
template <class Passes, class PrintLine>
int32_t print_best_first(const ResultRec& results, Passes passes, PrintLine print_line, const Params* p) {
  int32_t rank = 0;
  const int32_t last = std::max(last_listed_position(results.n, p), results.unranked);
  for (int32_t i = results.n - 1; i >= last; --i) {
    const int32_t k = results.order[i];
    if (passes(k)) print_line(++rank, k);
  }
  return rank;
}

}  // namespace

void require_precision(const Params* p) {
  if (p->PRECISION != 0) return;
  UTend_input(std_err, "PRECISION is 0: scores cannot be divided by it. Set it to 1 or a multiple of 10\n");
}

int32_t whole_score(int32_t score, const Params* p) {
  require_precision(p);
  return score / p->PRECISION;
}

void print_score_list(const SeqRec& query, const ResultRec& results, const ScoreMatrix& matrix,
                      RunTimes& times, const Params* p) {
  print_list_start(query, matrix, nullptr, p);
  if (p->SPECIAL != 0) {
    for (int32_t i = 0; i < results.n; ++i) print_plain_line(i + 1, results.order[i], results, p);
    return;
  }
  print_best_first(
      results, [&](int32_t k) { return results.scores[k] >= p->MIN_SCORE; },
      [&](int32_t rank, int32_t k) { print_plain_line(rank, k, results, p); }, p);
  print_list_end(times, p);
}

int32_t print_score_list2(const SeqRec& query, const ResultRec& results, const ScoreMatrix& matrix,
                          const LineFit* z_fit_opt, RunTimes& times, const Params* p) {
  print_list_start(query, matrix, z_fit_opt, p);
  const int32_t lines = print_best_first(
      results, [&](int32_t k) { return within(p->PROBCUT, results.significance[k]); },
      [&](int32_t rank, int32_t k) {
        print_rank(rank, p);
        const int32_t score = whole_score(results.scores[k], p);
        const float zscore = static_cast<float>(results.zscores[k]) / static_cast<float>(p->PRECISION);
        std::fprintf(std_out, "%4d %6.2f %-8.3g ", score, static_cast<double>(zscore),
                     results.significance[k]);
        print_names(results.seqs[k], p);
        std::fputc('\n', std_out);
      },
      p);
  print_list_end(times, p);
  return lines;
}

int32_t print_score_list3(const SeqRec& query, const ResultRec& results, const ScoreMatrix& matrix,
                          RunTimes& times, Params* p) {
  print_list_start(query, matrix, nullptr, p);
  const int32_t lines = print_best_first(
      results, [&](int32_t k) { return within(p->PROBCUT, results.significance[k]); },
      [&](int32_t rank, int32_t k) {
        print_rank(rank, p);
        std::fprintf(std_out, "%4d %-6.2f %-8.3g ", whole_score(results.scores[k], p),
                     results.standardised[k], results.significance[k]);
        print_names(results.seqs[k], p);
        std::fputc('\n', std_out);
      },
      p);
  print_list_end(times, p);
  p->n_probcut2_hits = static_cast<int32_t>(
      std::count_if(results.significance, results.significance + results.n,
                    [p](double significance) { return within(p->PROBCUT2, significance); }));
  return lines;
}

}  // namespace zelvan
