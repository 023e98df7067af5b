#include "report/run_header.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "report/report_data.h"
#include "seq/database_info.h"
#include "stats/lpfit.h"

namespace {

struct Settings {
  SeqRec query = reported_sequence("QUERY1", "a query", "ARNDCARNDC");
  BdbInfo info;
  Params p;

  Settings() {
    p.VERSION = "9.9 (today)\n";
    set_keys(p,
             "PRECISION 100 LD_PEN 1.5 LI_PEN 12.25 FS_PEN 20 FSE_PEN 3 MM_LD_PEN 6.75 PROBCUT 0.01 PROBCUT2 "
             "0.0005 "
             "QSEQ_FILE q.fasta MATRIX_FILE mats/md.mat");
    info.nseq = 40;
    info.nres = 12000;
    info.name = "small.fa";
    info.date = "Wed Jul 17 14:02:27 2002\n";
    p.binfo = &info;
  }
  std::string header(const LineFit* fit = nullptr) {
    return written([&](FILE* stream) { dump_info(stream, query, report_matrix(), fit, &p); });
  }
};

// The report without the rest of the line after a label that stands in it: a date.
std::string without_date(std::string report, const std::string& label) {
  const std::size_t date = report.find(label) + label.size();
  return report.erase(date, report.find('\n', date) - date);
}

TEST(DumpInfo, WritesAnIterativeRunInOrder) {
  Settings run;
  set_keys(run.p,
           "MODE 202 MIXED_MODE 1 DO_STATS 2 PROB_TYPE 2 NITER 3 PROFILE_WEIGHT_METHOD 1 POSWGTFAC 0.5 "
           "PIDTHRESH 0.75 VERBOSE 1 TIME 4");
  run.p.ITERATION = 2;
  run.p.SUCCESS = 1;
  LpfitData lpfit;
  const double a[] = {1.5, 2, -3}, b[] = {0, 0.25};
  std::copy_n(a, 3, lpfit.paramA);
  std::copy_n(b, 2, lpfit.paramB);
  run.p.lpfit = &lpfit;
  EXPECT_EQ(without_date(run.header(), "# ZELVAN Scan:    "),
            "# ZELVAN Scan:    \n"
            "# ZELVAN Version: 9.9 (today)\n"
            "# Written by the ZELVAN developers\n"
            "# Free software under the 3-clause BSD licence, without any warranty\n"
            "# Query file:     q.fasta\n"
            "# Query ID:       QUERY1\n"
            "# Query Title:    a query                                                      \n"
            "# Query Length:   10\n"
            "# ZELVAN MODE:    202\n"
            "# ZELVAN MIXED MODE ENABLED: MODE 202 on iteration 0, mode 200 afterwards\n"
            "# MM_LD_PEN:   6.75\n"
            "# Matrix file:    mats/md.mat\n"
            "# Matrix title:   a small matrix\n"
            "# LD penalty:   1.50\n"
            "# LI penalty:  12.25\n"
            "# Number of residues/bases in database: 12000\n"
            "# Eval Cutoff:                     0.01\n"
            "# FIT_A: 1.5 2 -3\n"
            "# FIT_B: 0 0.25 \n"
            "# Eval Cutoff for profile:       0.0005\n"
            "# Number of iterations:            3\n"
            "# Profile Weight Method:           1\n"
            "# Pos Weight Factor:               0.500000\n"
            "# Pid Threshold:                   0.750000\n"
            "# FULL parameter dump\n"
            "MODE : 202\nSUCCESS : 1\nVERBOSE : 1\nTIME : 4\n"
            "# Iteration: 2\n" +
                START_SCORES);
}

TEST(DumpInfo, ChoosesThePenaltyLinesByMode) {
  const std::string ld = "# LD penalty:   1.50\n", li = "# LI penalty:  12.25\n",
                    fs = "# FS  penalty:  20.00\n", fse = "# FSE  penalty:   3.00\n";
  const struct {
    int32_t mode;
    std::string lines;
    bool iteration;
  } cases[] = {{0, ld, false},
               {2, ld + li, false},
               {12, "", false},
               {20, ld + fs, false},
               {22, ld + li + fs, false},
               {29, fs + fse, false},
               {199, "", false},
               {200, ld, true},
               {202, ld + li, true},
               {210, "# VARIABLE simple gap penalties\n", true},
               {212, "# VARIABLE affine gap penalties\n", true},
               {299, "", true},
               {300, "", false},
               {-57, "", false}};
  for (const auto& c : cases) {
    Settings run;
    run.p.MODE = c.mode;
    const std::string report = run.header();
    const std::string before = "# Matrix title:   a small matrix\n", after = "# Number of residues";
    const std::size_t from = report.find(before) + before.size();
    EXPECT_EQ(report.substr(from, report.find(after) - from), c.lines) << c.mode;
    EXPECT_EQ(report.find("# Iteration: ") != std::string::npos, c.iteration) << c.mode;
    EXPECT_EQ(report.find("Penalty Factor") != std::string::npos, c.mode == 210 || c.mode == 212) << c.mode;
    EXPECT_EQ(report.substr(report.size() - START_SCORES.size()), START_SCORES) << c.mode;
  }
}

TEST(DumpInfo, TellsTheStatisticsThatExist) {
  const LineFit line = {1.5, -2, 0.25, 7};
  const std::string database =
      "# Database name:                   small.fa\n"
      "# Created on:                      Wed Jul 17 14:02:27 2002\n"
      "# Number of sequences:             40\n"
      "# Number of residues/bases in database: 12000\n";
  const std::string probcut = "# PROBCUT:                         0.010000\n";
  const struct {
    int32_t do_stats;
    const LineFit* fit;
    std::string lines;
  } cases[] = {
      {1, &line, "# FIT: m: 1.500000 c: -2.000000 var: 0.250000 nval: 7\n" + probcut},
      {1, nullptr, "# FIT: m: 0.000000 c: 0.000000 var: 0.000000 nval: 0\n" + probcut},
      {2, nullptr, "# Pval Cutoff:                     0.01\n"},  // without a length-dependent fit
      {0, &line, ""},
  };
  for (const auto& c : cases) {
    Settings run;
    run.p.BDB_GIVEN = 1;
    run.p.MODE = 20;
    run.p.DO_STATS = c.do_stats;
    const std::string report = run.header(c.fit);
    EXPECT_EQ(report.substr(report.find("# Database")), database + c.lines + START_SCORES);
  }
}

TEST(PrintTimes2, ShowsTheSlotsAndTheRates) {
  const std::string zeros = "    0.0     0.0     0.0     0.0";
  const struct {
    const char* scan;
    int32_t query_length;
    std::string shown, cpu, elapsed;
  } cases[] = {
      {"    2.0     3.0     4.0     5.0", 100000, "    2.0     3.0     4.0     5.0", "100.00", " 50.00"},
      {"    0.0     3.0     0.0     5.0", 100000, "    0.0     3.0     0.0     5.0", "   inf", "   inf"},
      {"    0.0     3.0     0.0     5.0", 0, "    0.0     3.0     0.0     5.0", "  0.00", "  0.00"},
      {"", 100000, zeros, "  0.00", "  0.00"},
  };
  for (const auto& c : cases) {
    RunTimes times;
    times[TIME_SETUP] = "a";
    times[TIME_LOAD] = "b";
    times[TIME_SCAN] = c.scan;
    times[TIME_SORT] = "not shown";
    times[TIME_SCORES] = "d";
    const std::string completed = "# Scan Completed at: ";
    const std::string report = without_date(
        written([&](FILE* stream) { print_times2(stream, times, c.query_length, 2000); }), completed);
    EXPECT_EQ(report, "# " + std::string(54, '-') + "\n" + completed + "\n# \n" +
                          "# Times:                              (Seconds)\n"
                          "# Load matrix, query and index:    a\n"
                          "# Load database:                   b\n"
                          "# Scan database:                   " +
                          c.shown + "\n" +
                          "# Output scores:                   d\n"
                          "# Generate and write alignments:   " +
                          zeros + "\n" + "# Millions of cell updates/sec in scan (CPU): " + c.cpu +
                          " (Elapsed): " + c.elapsed + "\n");
  }
}

}  // namespace
