// Length-dependent extreme-value statistics, fitted in every iteration to the scores of that very scan.
// Model: lpl = ln(query length x target length); location A(lpl), scale B(lpl) limited to [Bmin, Bmax];
// x = (score - A) / B; P = exp(-x).
#pragma once

#include <cstdint>

#include "driver/params.h"
#include "seq/sequence.h"
#include "util/memory.h"

// Why a fit failed. A failure of both location fits is told by the status of the linear fit plus 100 times that
// of the exponential one (numerics/allocators.h lists them).
enum LpfitError : int32_t {
  FIT_NO_TABLE = 39,         // no room for the table of scores
  FIT_NO_HITS = 42,          // there is no sequence to fit to
  FIT_SCORES_TOO_WIDE = 43,  // more than 50,000 score buckets: a few scores dwarf all others
  FIT_TOO_FEW_RANGES = 44,   // at no width have three ranges more than minbuck hits
  FIT_NO_WORK_SPACE = 45,    // no room for the fit of a range
  FIT_RANGE_FAILED = 48,  // the scores of a range follow no extreme-value distribution, e.g. are all the same
  FIT_SCALE_FAILED = 51   // the fit of the scale against lpl
};

struct LpfitData {
  UTvector<float> score;    // [n] matrix units
  UTvector<int32_t> qlen;   // [n] query length, residues
  UTvector<int32_t> dblen;  // [n] target length, residues
  int32_t n = 0;
  double paramA[4] = {0, -2.0, 1.0,
                      -1.0};  // location a1..a3; 1-based until apply_lpfit shifts them to 0-based
  double paramB[4] = {0, -2.0, 1.0, -1.0};  // scale b1..b3, likewise
  int32_t error = 0;                        // 0, or the positive code of the failure
  int32_t EXPORLIN = 0;                     // 0: A = a1 + a2 exp(-lpl / a3); 1: A = a1 + a2 lpl
  int32_t minbuck = 0;
  int32_t minrange = 0;
  int32_t trace_processing = 0;  // trace files, 0 or 1
  int32_t trace_hists = 0;
  int32_t trace_freqtab = 0;
  int32_t trace_stat = 0;
  float lplbucketwidth = 0;
  double Bmin = 0;
  double Bmax = 0;
};

// One iteration: setup_lpfit, do_lpfit, check error, apply_lpfit (once: it shifts the coefficients),
// get_lpfit_probs.

// setup_lpfit - the input of the fit. query_length in residues; scores x PRECISION.
LpfitData setup_lpfit(int32_t query_length, const SeqRec* seqs, const int32_t* scores, int32_t n,
                      const Params* p);

// do_lpfit - fits location and scale; returns lpfit.error.
int32_t do_lpfit(LpfitData& lpfit);

// apply_lpfit - shifts the coefficients and returns x for every hit.
UTvector<double> apply_lpfit(LpfitData& lpfit);

// get_lpfit_probs - the significance of every hit, of the kind that PROB_TYPE asks for.
UTvector<double> get_lpfit_probs(const UTvector<double>& x, const SeqRec* seqs, int32_t n, const Params* p);

// apply_single_lpfit, get_single_lpfit_prob - x and significance of one score (x PRECISION) at two lengths in
// residues.
double apply_single_lpfit(int32_t score, int32_t qlen, int32_t dblen, const LpfitData& lpfit,
                          const Params* p);
double get_single_lpfit_prob(int32_t score, int32_t qlen, int32_t dblen, const LpfitData& lpfit,
                             const Params* p);

// dud_lpfit - n times the same value, for when no fit is wanted.
UTvector<double> dud_lpfit(double value, int32_t n);

// freeup_lpfit - releases the per-hit arrays.
void freeup_lpfit(LpfitData& lpfit);
