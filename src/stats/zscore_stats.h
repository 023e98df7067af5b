// Length-binned statistics of the translated searches: how far a score stands above what sequences of its
// length score by chance, estimated from the scores of the scan itself.
// Model: the mean chance score is a straight line in the logarithm of the length, with the same variance at
// every length; what remains is distributed as an extreme value. (A line in the length itself would lift the
// expectation for very long sequences far above any score, and widens the variance for all others.)
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// The straight line of mean score against length of the z-score statistics.
struct LineFit {
  double slope = 0;
  double intercept = 0;
  double variance = 0;
  int32_t nval = 0;  // points; 0: no line was fitted
};

// mean_score - what chance scores on average, in matrix units, at this ln(length).
inline double mean_score(const LineFit& line, double log_length) {
  return line.intercept + line.slope * log_length;
}

// The sequences of lengths first..last; there may be none.
struct LengthBin {
  int32_t first = 0;  // residues or nucleotides
  int32_t last = 0;
  int32_t sequences = 0;
  int32_t fitted = 0;     // of them, those that the line was fitted to
  double log_length = 0;  // means of the fitted ones
  double score = 0;       // matrix units
};

struct ZStats {
  LineFit line;   // of the mean score (matrix units) against ln(length); nval: bins that it was fitted to
  int32_t n = 0;  // sequences scanned: what E-values refer to
  UTvector<LengthBin> bins;   // ascending
  UTvector<uint8_t> related;  // [n] 1: left out of the fit as a high scorer
};

// do_stats - fits the line to the scores of a scan.
// Does   a first line goes through the bins' median scores, its spread comes from the quartiles; then,
//        repeatedly, sequences whose score the latest line expects less than 0.05 times in the whole scan
//        are left out as related, and line and variance are taken from the means of the others, each bin
//        weighted by its sequences. Related sequences thus neither lift nor widen the background
// In     scores[0..n-1] x PRECISION; -1: no score, takes no part. seqs[0..n-1]: only their lengths are read
// Returns line, bins and related; with fewer than two bins the slope is 0
ZStats do_stats(const int32_t* scores, const SeqRec* seqs, int32_t n, const Params* p);

// get_zscores - 50 + 10 (score - line) / SD of every sequence, x PRECISION, rounded.
// Returns zscores[0..n-1]; 50 x PRECISION where all scores are the same, 0 for a sequence without a score
UTvector<int32_t> get_zscores(const ZStats& stats, const int32_t* scores, const SeqRec* seqs, int32_t n,
                              const Params* p);

// get_p, get_e - the probability that one comparison reaches each z-score by chance, and the number of
// sequences expected to reach it in a scan of n.
// In     zscores[0..n-1] of get_zscores
// Source extreme-value distribution of mean 50 and standard deviation 10
UTvector<double> get_p(const int32_t* zscores, int32_t n, const Params* p);
UTvector<double> get_e(const int32_t* zscores, int32_t n, const Params* p);

}  // namespace zelvan
