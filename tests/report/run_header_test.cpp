#include "report/run_header.h"

#include <gtest/gtest.h>

#include "report_data.h"
#include "seq/database_info.h"
#include "stats/lpfit.h"

namespace {

struct Settings {
  Sequences queries;
  ScoreMatrix matrix = small_matrix();
  BdbInfo info;
  LpfitData lpfit;
  LineFit line;
  Params p;

  Settings() {
    queries.add("QUERY1", "a query", "ARNDCARNDC");
    p.VERSION = "9.9 (today)\n";
    p.PRECISION = 100;
    p.QSEQ_FILE.name = "q.fasta";
    p.MATRIX_FILE.name = "mats/md.mat";
    p.LD_PEN = 150;
    p.LI_PEN = 1225;
    p.FS_PEN = 2000;
    p.FSE_PEN = 300;
    p.MM_LD_PEN = 675;
    p.PROBCUT = 0.01F;
    p.PROBCUT2 = 0.0005F;
    info.nseq = 40;
    info.nres = 12000;
    info.name = "small.fa";
    info.date = "Wed Jul 17 14:02:27 2002\n";
    p.binfo = &info;
  }
  std::string header(const LineFit* fit = nullptr) {
    return written([&](FILE* stream) { dump_info(stream, queries.records[0], matrix, fit, &p); });
  }
};

// The report without the rest of the line after a label that stands in it: a date.
std::string without_date(std::string report, const std::string& label) {
  const std::size_t date = report.find(label) + label.size();
  return report.erase(date, report.find('\n', date) - date);
}

const std::string START = "# Start_Scores: " + std::string(52, '-') + "\n";

TEST(DumpInfo, WritesAnIterativeRunInOrder) {
  Settings run;
  run.p.MODE = 202;
  run.p.MIXED_MODE = 1;
  run.p.DO_STATS = 2;
  run.p.PROB_TYPE = 2;
  run.p.NITER = 3;
  run.p.PROFILE_WEIGHT_METHOD = 1;
  run.p.POSWGTFAC = 0.5;
  run.p.PIDTHRESH = 0.75;
  run.p.ITERATION = 2;
  run.p.VERBOSE = 1;
  run.p.SUCCESS = 1;
  run.p.TIME = 4;
  run.lpfit.paramA[0] = 1.5;
  run.lpfit.paramA[1] = 2;
  run.lpfit.paramA[2] = -3;
  run.lpfit.paramB[0] = 0;
  run.lpfit.paramB[1] = 0.25;
  run.p.lpfit = &run.lpfit;
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
                START);
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
    EXPECT_EQ(report.substr(report.size() - START.size()), START) << c.mode;
  }
}

TEST(DumpInfo, TellsTheStatisticsThatExist) {
  Settings run;
  run.p.BDB_GIVEN = 1;
  run.line = {1.5, -2, 0.25, 7};
  const auto after_matrix = [&](const LineFit* fit) {
    const std::string report = run.header(fit);
    return report.substr(report.find("# Database"));
  };
  const std::string database =
      "# Database name:                   small.fa\n"
      "# Created on:                      Wed Jul 17 14:02:27 2002\n"
      "# Number of sequences:             40\n"
      "# Number of residues/bases in database: 12000\n";
  run.p.DO_STATS = 1;
  run.p.MODE = 20;
  const std::string probcut = "# PROBCUT:                         0.010000\n";
  EXPECT_EQ(after_matrix(&run.line),
            database + "# FIT: m: 1.500000 c: -2.000000 var: 0.250000 nval: 7\n" + probcut + START);
  EXPECT_EQ(after_matrix(nullptr),
            database + "# FIT: m: 0.000000 c: 0.000000 var: 0.000000 nval: 0\n" + probcut + START);
  run.p.DO_STATS = 2;  // without a length-dependent fit
  EXPECT_EQ(after_matrix(nullptr), database + "# Pval Cutoff:                     0.01\n" + START);
  run.p.DO_STATS = 0;
  EXPECT_EQ(after_matrix(&run.line), database + START);
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
