// The extreme-value fit of one range: location and scale of the scores of pairs of about the same lpl.
#pragma once

#include <cstdint>

#include "stats/score_table.h"
#include "util/memory.h"

namespace zelvan {

struct RangeFit {
  double u = 0;     // location, matrix units
  double beta = 0;  // scale, > 0
  double chisq = 0;
};

// One score bucket per integer score; 1-based like the fitting routines, element 0 unused.
struct FrequencyTable {
  int32_t nbuckets = 0;
  UTvector<double> score;    // abscissa, s + 0.5 for the hits of truncated score s
  UTvector<double> density;  // share of the range's hits
  UTvector<double> sigma;    // standard deviation of the density
};

// range_frequencies - the frequency table of one range.
// Does   a hit of truncated score s stands for a score somewhere in s..s+1, so the middle of the bucket is
//        its abscissa. The curve fitted that way gives, at s itself, the probability of a truncated score of
//        s or more, which is what a significance means. The standard deviations come from the counts expected
//        under the starting values: the counts observed would favour buckets that came out low. At least one
//        hit is expected of every bucket, so that related sequences, far above the rest, have little weight
// Out    start: location and scale from mean and standard deviation of the scores
FrequencyTable range_frequencies(const ScoreTable& table, const LplRange& range, RangeFit& out_start);

// fit_range - least-squares fit of the extreme-value density to a frequency table.
// In/Out fit: the starting values, then the result
// Does   Levenberg-Marquardt steps until ten in a row lowered chi-square by less than 0.1
// Returns 0, or a status of the fitting routines: out of memory, singular matrix, or not converged (1,000
//        steps used up, or a result that is not finite or no scale)
int fit_range(const FrequencyTable& frequencies, RangeFit& fit);

}  // namespace zelvan
