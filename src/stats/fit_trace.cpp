#include "stats/fit_trace.h"

#include "stats/numerics/model_fits.h"

namespace zelvan {
namespace {

FileRec created(const char* name, int32_t wanted) {
  FileRec file = UTfilemake(name, "w", 0);
  if (wanted == 1) UTfileopen(file, "w", 1);
  return file;
}

void close_written(FileRec& file) {
  if (file.stream == nullptr) return;
  UTfilewritten(file);
  UTfileclose(file, 1);
}

// Number of the range that a bin belongs to, from 1; 0 for none.
int32_t range_of_bin(const RangeChoice& choice, int32_t bin) {
  for (std::size_t m = 0; m < choice.ranges.size(); ++m) {
    if (choice.ranges[m].first <= bin && bin <= choice.ranges[m].last) return static_cast<int32_t>(m) + 1;
  }
  return 0;
}

void write_bins(FILE* stream, const ScoreTable& table, const RangeChoice& choice) {
  for (int32_t bin = 0; bin < LPL_BINS; ++bin) {
    const LplBin& b = table.bins[bin];
    if (b.count == 0) continue;
    std::fprintf(stream, "%d  %d  %d  %f  %f  %f  %d\n", bin, bin + FIRST_LPL_TENTHS, b.count,
                 b.tenths_sum / b.count / 10.0, b.score_sum, b.score_sum / b.count,
                 range_of_bin(choice, bin));
  }
}

}  // namespace

FitTrace open_fit_trace(const LpfitData& lpfit) {
  FitTrace trace;
  trace.processing = created("PROCESSING", lpfit.trace_processing);
  trace.hists = created("FREQTAB_HISTS", lpfit.trace_hists);
  trace.freqtab = created("FREQTAB_OUT", lpfit.trace_freqtab);
  trace.stat = created("STAT_DATA", lpfit.trace_stat);
  return trace;
}

void trace_summary(const FitTrace& trace, const ScoreSummary& summary, int32_t n) {
  FILE* stream = trace.processing.stream;
  if (stream == nullptr) return;
  std::fprintf(stream, "count = %d, num_scores = %d, numpts = %d i = %d\n", summary.count, n, n, n);
  std::fprintf(stream,
               "maxscore = %d, lowscore = %d, scoremean = %f, scoreSD = %f, scoresum = %f, scoresumsq = %f, "
               "count = %d\n",
               summary.maxscore, summary.lowscore, summary.mean, summary.sd, summary.sum, summary.sumsq,
               summary.count);
  std::fprintf(stream, "lplbucketwidth = %f\n", 0.1);
}

void trace_width(const FitTrace& trace, const RangeChoice& tried) {
  if (trace.processing.stream == nullptr) return;
  const int32_t low = tried.ranges.empty() ? -1 : tried.ranges.front().first;
  std::fprintf(trace.processing.stream, "lpllowrange = %d, j = %d, lplrangewidth = %d\n", low,
               static_cast<int32_t>(tried.ranges.size()), tried.width);
}

void trace_choice(const FitTrace& trace, const ScoreTable& table, const RangeChoice& choice) {
  if (trace.stat.stream != nullptr) write_bins(trace.stat.stream, table, choice);
  if (trace.processing.stream == nullptr) return;
  const int32_t low = choice.ranges.front().first;
  const int32_t high = choice.ranges.back().last;
  std::fprintf(trace.processing.stream,
               "templpl = %d, lplrangewidth = %d, lpllowrange = %d, lplhighrange = %d\n", high - low + 1,
               choice.width, low, high);
  std::fprintf(trace.processing.stream, "finalj = %d\n", static_cast<int32_t>(choice.ranges.size()));
}

void trace_range(const FitTrace& trace, const ScoreTable& table, const LplRange& range, int32_t number,
                 const FrequencyTable& frequencies, const RangeFit& fit) {
  if (FILE* stream = trace.processing.stream; stream != nullptr) {
    std::fprintf(stream, "m = %d, templpl = %d, lplscorerange = %d, num_score_buckets = %d\n", number,
                 range.first, range.count, table.nbuckets);
    std::fprintf(stream, "LPL RANGE: %d\n", range.first + FIRST_LPL_TENTHS);
    std::fprintf(stream, "p = %d, i = %d, lpl range = %f, paramA = %f, paramB = %f, chisq = %f\n", number,
                 range.first, range.tenths, fit.u, fit.beta, fit.chisq);
  }
  const double a[3] = {0.0, fit.u, fit.beta};
  for (int32_t i = 1; i <= frequencies.nbuckets; ++i) {
    const auto at = static_cast<std::size_t>(i);
    if (trace.hists.stream != nullptr && frequencies.density[at] > 0.0) {
      std::fprintf(trace.hists.stream, "%d:  %f\n", table.lowscore + i - 1, frequencies.density[at]);
    }
    if (trace.freqtab.stream != nullptr) {
      double fitted = 0.0;
      double derivatives[3];
      fextrem_val2pt(frequencies.score[at], a, &fitted, derivatives, 2);
      std::fprintf(trace.freqtab.stream, "%lf %lf    %f\n", frequencies.score[at], frequencies.density[at],
                   fitted);
    }
  }
  if (trace.hists.stream != nullptr) std::fputs("\n\n", trace.hists.stream);
  if (trace.freqtab.stream != nullptr) std::fputs("\n\n", trace.freqtab.stream);
}

void trace_result(const FitTrace& trace, const LpfitData& lpfit) {
  FILE* stream = trace.processing.stream;
  if (stream == nullptr) return;
  const double* a = lpfit.paramA;
  if (lpfit.EXPORLIN == 0) {
    std::fprintf(stream, "ParameterA - %f + %f * (exp(-(lpl)/%f)) EXPORLIN = %d\n", a[0], a[1], a[2], 0);
  } else if (lpfit.EXPORLIN == 1) {
    std::fprintf(stream, "ParameterA - %f + %f * (lpl) EXPORLIN = %d\n", a[0], a[1], 1);
  } else {
    std::fprintf(stream, "EXPORLIN = %d\n", lpfit.EXPORLIN);
  }
  std::fprintf(stream, "ParameterB - %f + %f * (lpl)\n", lpfit.paramB[0], lpfit.paramB[1]);
}

void close_fit_trace(FitTrace& trace) {
  close_written(trace.processing);
  close_written(trace.hists);
  close_written(trace.freqtab);
  close_written(trace.stat);
}

}  // namespace zelvan
