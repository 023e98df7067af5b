#include "driver/command_line.h"

#include "driver/alias.h"
#include "driver/help.h"
#include "driver/key_table.h"
#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

// A lone argument is mostly somebody's way to ask for help, or for the version.
constexpr const char* HELP =
    "Help: zelvan without arguments shows the version and an overview, man zelvan_manual explains "
    "everything\n";

void report_unknown(int at, const char* argument, const Params* p) {
  std::fprintf(p->STDERR, "Unrecognised Parameter Command\nArgument:%d Type: %s \n", at, argument);
  std::fputs("Everything from here on is ignored", p->STDERR);
  if (const char* word = nearest_word(argument, p->ALIASES)) {
    std::fprintf(p->STDERR, ": did you mean -%s?", word);
  }
  std::fputc('\n', p->STDERR);
}

}  // namespace

Params* GetCmd(Params* p, int argc, const char* const* argv) {
  if (argc <= 1) ZELVAN_PrintOptions(p->STDERR, p->ALIASES, p->VERSION.c_str());
  const int given = argc - 1;
  if (given % 2 != 0) {
    std::fprintf(p->STDERR,
                 "You have supplied %d commands and arguments\n"
                 "I am expecting equal numbers of commands and arguments\n"
                 "Every command should have a value: e.g. TIME 1 not TIME\n"
                 "Type zelvan for brief help\n",
                 given);
    UTend_input(p->STDERR, "%s", given == 1 ? HELP : "");
  }
  for (int at = 1; at < argc; at += 2) {
    const KeyEntry* key = find_key(argv[at], p);
    if (key == nullptr) {
      report_unknown(at, argv[at], p);
      p->SUCCESS = -1;
      return p;
    }
    store_value(*key, argv[at + 1], "getcmd", p);
    // Only the arrival of PROBCUT2 is checked: a PROBCUT that comes later is not.
    if (key->field == KeyField(&Params::PROBCUT2) && p->PROBCUT2 > p->PROBCUT) {
      UTend_input(std_err, "Error:  PROBCUT (%g) must be >= PROBCUT2 (%g)\n", static_cast<double>(p->PROBCUT),
                  static_cast<double>(p->PROBCUT2));
    }
  }
  p->SUCCESS = 1;
  return p;
}

}  // namespace zelvan
