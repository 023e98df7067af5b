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
             "PRECISION 100 LD_PEN 1.5 LI_PEN 12.25 FS_PEN 20 FSE_PEN 3 MM_LD_PEN 6.75 PROBCUT 0.01 "
             "PROBCUT2 0.0005 QSEQ_FILE q.fasta MATRIX_FILE mats/md.mat");
    info.nres = 12000;
    p.binfo = &info;
  }
  std::string header() {
    return written([&](FILE* stream) { dump_info(stream, query, report_matrix(), nullptr, &p); });
  }
};

TEST(DumpInfo, ChoosesThePenaltyLinesByMode) {
  const std::string ld = "# LD penalty:   1.50\n", li = "# LI penalty:  12.25\n",
                    fs = "# FS  penalty:  20.00\n", fse = "# FSE  penalty:   3.00\n";
  const std::pair<int32_t, std::string> cases[] = {
      {0, ld},        {2, ld + li}, {12, ""},           {20, ld + fs},  {200, ld},
      {202, ld + li}, {299, ""},    {22, ld + li + fs}, {29, fs + fse},
  };
  for (const auto& [mode, lines] : cases) {
    Settings run;
    run.p.MODE = mode;
    const std::string report = run.header();
    const std::string before = "# Matrix title:   a small matrix\n";
    const std::size_t from = report.find(before) + before.size();
    EXPECT_EQ(report.substr(from, report.find("# Number of residues") - from), lines) << mode;
    EXPECT_EQ(report.find("# Iteration: ") != std::string::npos, mode >= 200) << mode;
  }
}

TEST(PrintTimes2, ShowsTheRatesOfTheScan) {
  const std::tuple<const char*, int32_t, const char*> cases[] = {
      {"    2.0     3.0     4.0     5.0", 100000, "(CPU): 100.00 (Elapsed):  50.00\n"},
      {"    0.0     3.0     0.0     5.0", 100000, "(CPU):    inf (Elapsed):    inf\n"},
      {"    0.0     3.0     0.0     5.0", 0, "(CPU):   0.00 (Elapsed):   0.00\n"},
      {"", 100000, "(CPU):   0.00 (Elapsed):   0.00\n"},
  };
  for (const auto& [scan, query_length, rates] : cases) {
    RunTimes times;
    times[TIME_SCAN] = scan;
    const std::string report =
        written([&](FILE* stream) { print_times2(stream, times, query_length, 2000); });
    EXPECT_TRUE(report.ends_with(rates)) << report;
  }
}

}  // namespace
