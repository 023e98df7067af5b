#include "driver/command_line.h"

#include <gtest/gtest.h>

#include "driver/configuration.h"

namespace {

using testing::ExitedWithCode;

TEST(CommandLine, AppliesPairsInOrder) {
  const Params* p = apply(configured("LD_PEN 3\n"), {"-mode", "202", "LD_PEN", "9", "-ld_pen", "7.5", "-prec",
                                                     "10", "-li_pen", "13", "-m", "PAM100", "-bdb", "nr"});
  EXPECT_EQ(p->SUCCESS, 1);
  EXPECT_EQ(p->MODE, 202);
  EXPECT_EQ(p->LD_PEN, 750) << "the later value wins, scaled by the precision so far";
  EXPECT_EQ(p->LI_PEN, 130);
  EXPECT_EQ(p->MATRIX_FILE.name, "PAM100");
  EXPECT_EQ(p->BDB_INDEX_FILE.name, ".//nr.bix");
  EXPECT_EQ(apply(configured(""), {"-s", "", "-niter", "-2"})->QSEQ_FILE.name, "");
}

TEST(CommandLine, StopsAtAnUnknownKeyButGoesOn) {
  Params* p = configured("");
  testing::internal::CaptureStderr();
  EXPECT_EQ(apply(p, {"-niter", "5", "MODE", "202", "-unknown", "x", "-max_nout", "7"}), p);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Unrecognised Parameter Command\nArgument:5 Type: -unknown \n");
  EXPECT_EQ(p->SUCCESS, -1);
  EXPECT_EQ(p->NITER, 5);
  EXPECT_EQ(p->MODE, 202);
  EXPECT_EQ(p->MAX_NOUT, 20);
}

TEST(CommandLineDeathTest, EndsTheRunOnWhatCannotBeMeant) {
  const char* odd =
      "^You have supplied 1 commands and arguments\nI am expecting equal numbers of commands and arguments\n"
      "Every command should have a value: e.g. TIME 1 not TIME\nType zelvan for brief help\n$";
  EXPECT_EXIT(apply(configured(""), {"TIME"}), ExitedWithCode(255), odd);
  EXPECT_EXIT(apply(configured(""), {"-unknown", "1", "-precision", "15", "x"}), ExitedWithCode(255),
              "^You have supplied 5 commands");
  EXPECT_EXIT(apply(configured(""), {"-probcut2", "0.01"}), ExitedWithCode(255),
              "^Error:  PROBCUT \\(0.001\\) must be >= PROBCUT2 \\(0.01\\)\n$");
  EXPECT_EXIT(apply(configured(""), {"PROBCUT2", "0.01", "PROBCUT", "1"}), ExitedWithCode(255),
              "^Error:  PROBCUT");
  EXPECT_EXIT(apply(configured(""), {"PRECISION", "15"}), ExitedWithCode(0),
              "^Invalid Precision multiplier in getcmd: .*\n$");
  EXPECT_EXIT(apply(configured(""), {"STDIN", "/missing"}), ExitedWithCode(1),
              "^Cannot Open File: /missing: ");
}

TEST(CommandLine, ChecksTheProfileCutWhenItArrives) {
  const Params* p = apply(configured(""), {"-probcut", "0.1", "-probcut2", "0.1", "-probcut", "0.001"});
  EXPECT_EQ(p->SUCCESS, 1);
  EXPECT_EQ(p->PROBCUT2, 0.1F);
  EXPECT_EQ(p->PROBCUT, 0.001F);
}

// Reports about the arguments themselves follow a STDERR argument, those about values and files do not.
TEST(CommandLineDeathTest, KnowsWhichErrorStreamIsMeant) {
  const TemporaryDirectory work;
  const std::string log = work.at("log");
  const auto with_log = [&](const char* key, const char* value) {
    apply(configured(""), {"STDERR", log.c_str(), key, value});
    std::exit(7);
  };
  EXPECT_EXIT(with_log("PROBCUT2", "0.5"), ExitedWithCode(255), "^Error:  PROBCUT");
  EXPECT_EXIT(with_log("PRECISION", "7"), ExitedWithCode(0), "^Invalid Precision");
  EXPECT_EXIT(with_log("STDOUT", "/missing/x"), ExitedWithCode(1), "^Cannot Open File");
  EXPECT_EQ(file_content(log), "");
  EXPECT_EXIT(with_log("nonsense", "1"), ExitedWithCode(7), "^$");
  EXPECT_EQ(file_content(log), "Unrecognised Parameter Command\nArgument:3 Type: nonsense \n");
}

TEST(CommandLineDeathTest, NoArgumentsShowTheHelp) {
  Params* p = configured("");
  p->VERSION = "1 (today)\n";
  EXPECT_EXIT(apply(p, {}), ExitedWithCode(255), "^-{69}\nZELVAN Version: 1 \\(today\\)\n");
}

}  // namespace
