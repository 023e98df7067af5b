// Length-dependent extreme-value statistics, fitted in every iteration to the scores of that very scan.
//
// Model, for score s in matrix units between sequences of m and n residues:
//   lpl = ln(m n), the product formed in 32 bits with wrap-around
//   A = a1 + a2 exp(-lpl / a3) (EXPORLIN 0) or a1 + a2 lpl (EXPORLIN 1)    location
//   B = b1 + b2 lpl, not below Bmin, then not above Bmax                   scale
//   x = (s - A) / B and P = exp(-x)
// Most of a database is unrelated to the query. Its scores, grouped by lpl, show how unrelated scores are
// distributed at that lpl; the related few lie beyond the bulk and hardly move a fit to it.
//
// One iteration: setup_lpfit, do_lpfit, check error, apply_lpfit, get_lpfit_probs.
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// Why a fit failed. When both location fits fail the code is the status of the linear fit plus 100 times that
// of the exponential one (numerics/allocators.h lists them).
enum LpfitError : int32_t {
  FIT_NO_TABLE = 39,         // not enough memory for the table of scores
  FIT_NO_HITS = 42,          // there is no sequence to fit to
  FIT_SCORES_TOO_WIDE = 43,  // more than MAX_SCORE_BUCKETS (score_table.h): a few scores dwarf all others
  FIT_TOO_FEW_RANGES = 44,   // no width gives three ranges with more than minbuck hits: too small a database
  FIT_NO_WORK_SPACE = 45,    // not enough memory for the fit of a range
  FIT_RANGE_FAILED = 48,     // the scores of a range follow no extreme-value curve, e.g. are all the same
  FIT_SCALE_FAILED = 51      // the fit of the scale against lpl
};

struct LpfitData {
  UTvector<float> score;    // [n] matrix units
  UTvector<int32_t> qlen;   // [n] query length, residues
  UTvector<int32_t> dblen;  // [n] target length, residues
  int32_t n = 0;
  double paramA[3] = {-2.0, 1.0, -1.0};  // a1, a2, a3: starting values until do_lpfit
  double paramB[3] = {-2.0, 1.0, -1.0};  // b1, b2; the third is not used
  int32_t error = 0;                     // 0, or the positive code of the failure
  int32_t EXPORLIN = 0;                  // form of the location, see above
  int32_t minbuck = 0;                   // a range is usable when it has more hits
  int32_t minrange = 0;                  // usable ranges to aim at
  int32_t trace_processing = 0;          // 1: write the trace file (fit_trace.h)
  int32_t trace_hists = 0;
  int32_t trace_freqtab = 0;
  int32_t trace_stat = 0;
  float lplbucketwidth = 0;  // carried only: the fit works on bins of 0.1
  double Bmin = 0;
  double Bmax = 0;
};

// setup_lpfit - the input of the fit.
// In     query_length in residues; seqs[0..n-1]; scores[0..n-1] x PRECISION
// Does   with VERBOSE reports three keys on std_err; with VERBOSE 1000 writes the input to std_out
LpfitData setup_lpfit(int32_t query_length, const SeqRec* seqs, const int32_t* scores, int32_t n,
                      const Params* p);

// do_lpfit - fits location and scale.
// Does   1 truncates scores to integers; leaves out those above mean + 5 SD of all and pairs with lpl outside
//          4..20 (pairs without lpl, too: an empty sequence, a product of lengths beyond 32 bits)
//        2 groups bins of 0.1 lpl into ranges of equal width. The width grows from one bin on while fewer
//          than `minrange` ranges (three at least) have more than `minbuck` hits, up to 20 bins, and also
//          while it is below four bins and enough ranges remain: wider ranges hold more hits at the sparse
//          ends of the length distribution, where the limits of the scale come from, and over 0.4 lpl the
//          location moves by a fraction of the scale only. Where no width gives `minrange`, the one that
//          gives most is taken, the wider of two that give as many; three ranges are enough
//        3 fits the extreme-value density to each range (range_fit.h); its lpl is the mean of its hits
//        4 Bmin and Bmax from the three ranges at either end
//        5 location against lpl: the exponential, or a line through 0 when that fit fails; scale against lpl:
//          a line through 0
//        writes the trace files that are asked for
// Out    paramA, paramB, EXPORLIN, Bmin, Bmax; error
// Returns error: 0 or a positive code. The work space does not grow with n
// Ends   only when a trace file cannot be written
// Measured on 150 domains against 34,000 sequences: sequences of another fold at E <= 0.1, 1, 10: 1.1, 0.99,
//        0.98 of the ideal number; shuffled sequences: 1.3, 0.87, 0.77. Ranges of one bin instead of up to
//        four: the number at E <= 10 scatters by 5.6 instead of 4.8 from query to query
int32_t do_lpfit(LpfitData& lpfit);

// apply_lpfit - x for every hit of a fitted record.
// Returns x[0..n-1]; minus infinity for a pair without lpl, which is thus never significant and sorts last;
//        NaN when EXPORLIN is neither 0 nor 1
UTvector<double> apply_lpfit(const LpfitData& lpfit);

// get_lpfit_probs - the significance of every hit: P times a factor that PROB_TYPE chooses.
//   0: 1                                          a P value
//   1: p->DB_QUERY_RATIO
//   2: residues of the database / of the target   E values
//   3: sequences of the database
//   any other: NaN
// In     x[0..n-1] of apply_lpfit; seqs[0..n-1]; p->binfo
UTvector<double> get_lpfit_probs(const UTvector<double>& x, const SeqRec* seqs, int32_t n, const Params* p);

// apply_single_lpfit, get_single_lpfit_prob - the same x and significance for one score (x PRECISION) at two
// lengths in residues.
double apply_single_lpfit(int32_t score, int32_t qlen, int32_t dblen, const LpfitData& lpfit,
                          const Params* p);
double get_single_lpfit_prob(int32_t score, int32_t qlen, int32_t dblen, const LpfitData& lpfit,
                             const Params* p);

// dud_lpfit - n times the same value: what takes the place of x or significance where no fit is wanted.
UTvector<double> dud_lpfit(double value, int32_t n);

// release_hits - frees the arrays of the hits, which nothing needs once apply_lpfit was called; n stays.
void release_hits(LpfitData& lpfit);

// freeup_lpfit - releases the per-hit arrays and empties the record, for callers who keep it longer than its
// iteration.
void freeup_lpfit(LpfitData& lpfit);

}  // namespace zelvan
