#include "report/run_header.h"

#include <algorithm>
#include <cstdlib>

#include "driver/help.h"
#include "driver/search_mode.h"
#include "seq/database_info.h"
#include "stats/lpfit.h"
#include "util/file_record.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr int32_t TITLE_WIDTH = 61;
constexpr int32_t START_RULE_WIDTH = 52;
constexpr int32_t TIMES_RULE_WIDTH = 54;

// A penalty in matrix units, as the header shows it.
double matrix_units(int32_t penalty, const Params* p) {
  return static_cast<double>(static_cast<float>(penalty) / static_cast<float>(p->PRECISION));
}

const char* kind_of_value(const Params* p) {
  return p->PROB_TYPE != 0 ? "Eval" : "Pval";
}

void print_program_and_query(FILE* stream, const SeqRec& query, const Params* p) {
  std::fprintf(stream, "# ZELVAN Scan:    %s", UTlocaltime());
  std::fprintf(stream, "# ZELVAN Version: %s", p->VERSION.c_str());
  std::fprintf(stream, "# %s\n# %s\n", CREDIT_LINES[0], CREDIT_LINES[1]);
  std::fprintf(stream, "# Query file:     %s\n", p->QSEQ_FILE.name.c_str());
  std::fprintf(stream, "# Query ID:       %s\n", query.id);
  std::fputs("# Query Title:    ", stream);
  UTpstring(stream, query.title, TITLE_WIDTH);
  std::fputc('\n', stream);
  std::fprintf(stream, "# Query Length:   %d\n", residues(query));
}

void print_mode_and_matrix(FILE* stream, const ScoreMatrix& matrix, const Params* p) {
  std::fprintf(stream, "# ZELVAN MODE:    %d\n", p->MODE);
  if (p->MIXED_MODE == 1) {
    std::fputs("# ZELVAN MIXED MODE ENABLED: MODE 202 on iteration 0, mode 200 afterwards\n", stream);
    std::fprintf(stream, "# MM_LD_PEN: %6.2f\n", matrix_units(p->MM_LD_PEN, p));
  }
  std::fprintf(stream, "# Matrix file:    %s\n", p->MATRIX_FILE.name.c_str());
  if (p->SHOW_PMATRIX != 0) {
    PrintPairscoreMatrix(stream, matrix, p);
  } else {
    std::fprintf(stream, "# Matrix title:   %s\n", matrix.title.c_str());
  }
}

void print_penalties(FILE* stream, const Params* p) {
  const SearchMode mode = decode_mode(p->MODE);
  const bool translated_query = mode.comparison == Comparison::TRANSLATED_QUERY;
  if (mode.gaps_by_position) {
    std::fprintf(stream, "# VARIABLE %sgap penalties\n", mode.affine ? "affine " : "simple ");
  } else if (mode.comparison == Comparison::PROTEINS || translated_query) {
    std::fprintf(stream, "# LD penalty: %6.2f\n", matrix_units(p->LD_PEN, p));
    if (mode.affine) std::fprintf(stream, "# LI penalty: %6.2f\n", matrix_units(p->LI_PEN, p));
  }
  if (translated_query || mode.extends_frame_shifts) {
    std::fprintf(stream, "# FS  penalty: %6.2f\n", matrix_units(p->FS_PEN, p));
  }
  if (mode.extends_frame_shifts) {
    std::fprintf(stream, "# FSE  penalty: %6.2f\n", matrix_units(p->FSE_PEN, p));
  }
}

void print_database(FILE* stream, const Params* p) {
  if (p->BDB_GIVEN != 0) {
    std::fprintf(stream, "# Database name:                   %s\n", p->binfo->name.c_str());
    std::fprintf(stream, "# Created on:                      %s", p->binfo->date.c_str());
    std::fprintf(stream, "# Number of sequences:             %d\n", p->binfo->nseq);
  }
  std::fprintf(stream, "# Number of residues/bases in database: %lld\n",
               static_cast<long long>(p->binfo->nres));
}

void print_statistics(FILE* stream, const LineFit* z_fit_opt, const Params* p) {
  const double cutoff = static_cast<double>(p->PROBCUT);
  if (p->DO_STATS == 1) {
    const LineFit fit = z_fit_opt != nullptr ? *z_fit_opt : LineFit();
    std::fprintf(stream, "# FIT: m: %f c: %f var: %f nval: %d\n", fit.slope, fit.intercept, fit.variance,
                 fit.nval);
    std::fprintf(stream, "# PROBCUT:                         %f\n", cutoff);
  }
  if (p->DO_STATS == 2) {
    std::fprintf(stream, "# %s Cutoff:                     %g\n", kind_of_value(p), cutoff);
    if (p->lpfit != nullptr) {
      const double* a = p->lpfit->paramA;
      const double* b = p->lpfit->paramB;
      std::fprintf(stream, "# FIT_A: %g %g %g\n", a[0], a[1], a[2]);
      std::fprintf(stream, "# FIT_B: %g %g \n", b[0], b[1]);
    }
  }
}

void print_profile_settings(FILE* stream, const Params* p) {
  const SearchMode mode = decode_mode(p->MODE);
  if (mode.comparison != Comparison::PROTEINS) return;
  std::fprintf(stream, "# %s Cutoff for profile:       %g\n", kind_of_value(p),
               static_cast<double>(p->PROBCUT2));
  std::fprintf(stream, "# Number of iterations:            %d\n", p->NITER);
  std::fprintf(stream, "# Profile Weight Method:           %d\n", p->PROFILE_WEIGHT_METHOD);
  std::fprintf(stream, "# Pos Weight Factor:               %f\n", p->POSWGTFAC);
  std::fprintf(stream, "# Pid Threshold:                   %f\n", p->PIDTHRESH);
  if (mode.gaps_by_position) {
    std::fprintf(stream, "# Penalty Factor:                  %f\n", p->PEN_FACTOR);
  }
}

const char* slot_text(const RunTimes& times, RunTimeSlot slot) {
  return times[slot].empty() ? "    0.0     0.0     0.0     0.0" : times[slot].c_str();
}

// Infinite for a scan too short to measure.
double millions_a_second(double cells, double seconds) {
  return cells > 0 ? cells / seconds / 1e6 : 0;
}

}  // namespace

void dump_info(FILE* stream, const SeqRec& query, const ScoreMatrix& matrix, const LineFit* z_fit_opt,
               const Params* p) {
  print_program_and_query(stream, query, p);
  print_mode_and_matrix(stream, matrix, p);
  print_penalties(stream, p);
  print_database(stream, p);
  print_statistics(stream, z_fit_opt, p);
  print_profile_settings(stream, p);
  if (p->VERBOSE == 1) {
    std::fputs("# FULL parameter dump\n", stream);
    FullParameterDump(stream, p);
  }
  if (decode_mode(p->MODE).comparison == Comparison::PROTEINS) {
    std::fprintf(stream, "# Iteration: %d\n", p->ITERATION);
  }
  std::fputs("# Start_Scores: ", stream);
  UTpline(stream, '-', START_RULE_WIDTH);
}

void FullParameterDump(FILE* stream, const Params* p) {
  std::fprintf(stream, "MODE : %d\n", p->MODE);
  std::fprintf(stream, "SUCCESS : %d\n", p->SUCCESS);
  std::fprintf(stream, "VERBOSE : %d\n", p->VERBOSE);
  std::fprintf(stream, "TIME : %d\n", p->TIME);
}

void print_times2(FILE* stream, const RunTimes& times, int32_t query_length, int64_t db_residues) {
  const UTstring& scan = times[TIME_SCAN];
  const double cells =
      scan.empty() ? 0 : static_cast<double>(query_length) * static_cast<double>(db_residues);
  float elapsed_seconds = 0;
  std::sscanf(scan.c_str(), "%*f %*f %f", &elapsed_seconds);
  const double cpu_rate = millions_a_second(cells, std::strtod(scan.c_str(), nullptr));
  const double elapsed_rate = millions_a_second(cells, static_cast<double>(elapsed_seconds));
  std::fputs("# ", stream);
  UTpline(stream, '-', TIMES_RULE_WIDTH);
  std::fprintf(stream, "# Scan Completed at: %s", UTlocaltime());
  std::fputs("# \n", stream);
  std::fputs("# Times:                              (Seconds)\n", stream);
  std::fprintf(stream, "# Load matrix, query and index:    %s\n", slot_text(times, TIME_SETUP));
  std::fprintf(stream, "# Load database:                   %s\n", slot_text(times, TIME_LOAD));
  std::fprintf(stream, "# Scan database:                   %s\n", slot_text(times, TIME_SCAN));
  std::fprintf(stream, "# Output scores:                   %s\n", slot_text(times, TIME_SCORES));
  std::fprintf(stream, "# Generate and write alignments:   %s\n", slot_text(times, TIME_ALIGNMENTS));
  std::fprintf(stream, "# Millions of cell updates/sec in scan (CPU): %6.2f (Elapsed): %6.2f\n", cpu_rate,
               elapsed_rate);
}

}  // namespace zelvan
