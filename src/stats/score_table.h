// Scores counted by lpl and by score: all that the fit needs to know of the hits, in a table whose size does
// not grow with their number. lpl is the logarithm of query length x target length.
#pragma once

#include <cstdint>

#include "util/memory.h"

namespace zelvan {

constexpr int32_t LPL_BINS = 160;              // of width 0.1
constexpr int32_t FIRST_LPL_TENTHS = 40;       // lower edge of bin 0, in widths of a bin
constexpr int32_t MAX_RANGE_WIDTH = 20;        // bins
constexpr int32_t MAX_SCORE_BUCKETS = 100000;  // a table of 64 MB; ordinary scans need a few hundred
constexpr int32_t HIGHEST_LOWSCORE = 10000;    // the table starts no higher
constexpr double SCORES_UP_TO_SD = 5.0;  // SD above the mean; higher scores are those of related sequences

// log_length_product - lpl of two lengths in residues.
// Returns NaN when the product, formed in 32 bits with wrap-around, is not positive: an empty sequence, or a
//        product beyond 2^31 - 1
double log_length_product(int32_t qlen, int32_t dblen);

struct ScoreSummary {  // of the truncated scores of all hits
  int32_t count = 0;
  int32_t lowscore = 0;  // the lowest, HIGHEST_LOWSCORE at most
  int32_t maxscore = 0;  // mean + SCORES_UP_TO_SD, truncated: hits above take no part
  double mean = 0;
  double sd = 0;
  double sum = 0;
  double sumsq = 0;
};

struct LplBin {
  int32_t count = 0;      // hits with 4.0 <= lpl <= 20.0 and a score up to maxscore
  double tenths_sum = 0;  // of 10 x lpl
  double score_sum = 0;
};

struct ScoreTable {
  int32_t lowscore = 0;
  int32_t nbuckets = 0;  // one per integer score, from lowscore to maxscore
  LplBin bins[LPL_BINS];
  UTvector<int32_t> counts;  // [bin * nbuckets + score - lowscore]
};

// A run of neighbouring bins with enough hits for a fit of their own.
struct LplRange {
  int32_t first = 0;  // bin
  int32_t last = 0;   // inclusive
  int32_t count = 0;  // hits
  double tenths = 0;  // mean 10 x lpl of the hits
};

struct RangeChoice {
  int32_t width = 0;          // bins per range
  UTvector<LplRange> ranges;  // the usable ones, from low to high lpl
};

// summarise_scores - In: score[0..n-1] in matrix units, n >= 1.
ScoreSummary summarise_scores(const float* score, int32_t n);

// score_buckets - maxscore - lowscore + 1. Compare it with MAX_SCORE_BUCKETS before you make a table.
int64_t score_buckets(const ScoreSummary& summary);

// count_scores - the table of all hits that take part.
// In     score, qlen, dblen[0..n-1]; lengths in residues
ScoreTable count_scores(const float* score, const int32_t* qlen, const int32_t* dblen, int32_t n,
                        const ScoreSummary& summary);

// ranges_of_width - groups the bins, from bin 0 on, and keeps the usable ranges: more than minbuck hits.
RangeChoice ranges_of_width(const ScoreTable& table, int32_t width, int32_t minbuck);

}  // namespace zelvan
