// Entry point: configure, hand the record to the driver of the mode, make sure that what it tells was
// written.
#include <cstdio>
#include <cstdlib>

#include "bdb/builder.h"
#include "bdb/extraction.h"
#include "dna/dna_drivers.h"
#include "driver/command_line.h"
#include "driver/gap_defaults.h"
#include "driver/output_files.h"
#include "driver/params.h"
#include "driver/search_mode.h"
#include "iter/iter_driver.h"
#include "util/failure.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr const char* VERSION_TEXT = "2.3.9 (Wed Jul 17 14:02:27 BST 2002)\n";

void ZELVAN_PrintWarning(FILE* stream) {
  std::fputs(
      "WARNING: No ZELVANDIR environment variable set\n"
      "         I will assume you want to use zelvan_defaults.dat\n"
      "                                       zelvan_alias.dat\n"
      "                                   and zelvan_gapdefs.dat\n"
      "         from the current directory\n",
      stream);
}

// From here on all diagnostics of the support library follow the record's streams.
void ZELVAN_initfile(const Params* p) {
  std_err = p->STDERR;
  std_in = p->STDIN;
  std_out = p->STDOUT;
}

Params configure(int argc, const char* const* argv) {
  const char* given = std::getenv("ZELVANDIR");
  if (given == nullptr) ZELVAN_PrintWarning(stderr);
  const UTstring directory = UTstrdup(given != nullptr ? given : "./");
  const UTstring defaults_path = UTcat({directory, "/zelvan_defaults.dat"});
  const UTstring alias_path = UTcat({directory, "/zelvan_alias.dat"});
  const UTstring gaps_path = UTcat({directory, "/zelvan_gapdefs.dat"});

  Params record = GetPars(defaults_path.c_str(), alias_path.c_str());
  Params* p = &record;
  if (p->SUCCESS == -1) UTend_input(stderr, "Error decoding parameter file\n");
  p->VERSION = UTstrdup(VERSION_TEXT);
  if (p->VERBOSE != 0) std::fputs("Getting Default Gaps\n", stderr);
  if (!GetGaps(gaps_path.c_str(), p)) UTend_input(stderr, "Error decoding gap defaults file\n");
  if (p->VERBOSE != 0) std::fputs("Decoding Command line\n", stderr);
  p = GetCmd(p, argc, argv);
  check_outputs(p);
  UTempty_streams();
  ZELVAN_initfile(p);
  return record;
}

// The one place where MODE is interpreted as a whole. 11, 29 and 9999 are accepted and do nothing.
void run_mode(Params* p) {
  switch (p->MODE) {
    case 0:
      p->MODE = LINEAR_MODE;
      swpp2_iter(p);
      break;
    case 2:
      p->MODE = AFFINE_MODE;
      swpp2_iter(p);
      break;
    case 200:
    case 202:
    case 210:
    case 212:
      swpp2_iter(p);
      break;
    case 10:
      swipd(p);
      break;
    case 12:
      swaipd2(p);
      break;
    case 20:
      swadp(p);
      break;
    case 22:
      swaidp2(p);
      break;
    case 99:
      makedb(p);
      break;
    case 100:
      ex1(p);
      break;
    case 667:
      subset_db(p);
      break;
    case 11:
    case 29:
    case 9999:
      break;
    default:
      UTend_input(std_err, "Sorry but MODE:%d is not available\n", p->MODE);
  }
}

bool written_whole(FILE* stream) {
  return std::fflush(stream) == 0 && std::ferror(stream) == 0;
}

// A full disk must not look like success, neither of the report nor of the messages.
void check_streams() {
  if (!written_whole(std_out)) {
    UTerror("Error writing the report");
    UTend_stream(std_err,
                 "The output is incomplete: check the space on the disk that STDOUT is written to\n");
  }
  if (!written_whole(std_err)) {
    std_err = stderr;  // the only place left to say it
    UTerror("Error writing the messages");
    UTend_stream(std_err,
                 "The messages are incomplete: check the space on the disk that STDERR is written to\n");
  }
}

}  // namespace
}  // namespace zelvan

int main(int argc, char** argv) {
  using namespace zelvan;
  UTholdstreams();
  UTinitfile();
  Params record = configure(argc, argv);
  run_mode(&record);
  check_streams();
  return 0;
}
