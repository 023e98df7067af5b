#include <vector>

#include "driver/alias.h"
#include "driver/command_line.h"
#include "driver/gap_defaults.h"
#include "harness.h"
#include "targets.h"
#include "util/text.h"

namespace {

std::string_view text_of(FuzzInput input) {
  return {reinterpret_cast<const char*>(input.data()), input.size()};
}

// The lines of a text as the arguments of a command.
std::vector<std::string> words_of(std::string_view text) {
  std::vector<std::string> words = {"zelvan"};
  std::string word;
  for (const char c : text) {
    if (c != '\n' && c != ' ') {
      word += c;
    } else if (!word.empty()) {
      words.push_back(word.c_str());
      word.clear();
    }
  }
  return words;
}

}  // namespace

void fuzz_defaults(FuzzInput input) {
  const std::string path = scratch_file("zelvan_defaults.dat", text_of(input));
  const std::string aliases = shipped_file("config/zelvan_alias.dat");
  Params* p = nullptr;
  if (!came_back([&] { p = GetPars(path.c_str(), aliases.c_str()); })) return;
  require(p->SUCCESS == 1 || p->SUCCESS == -1, "SUCCESS is 1 or -1");
  require(p->PRECISION == 1 || p->PRECISION % 10 == 0, "PRECISION is 1 or a multiple of 10");
  require(p->STDIN != nullptr && p->STDOUT != nullptr && p->STDERR != nullptr, "three streams");

  const std::vector<std::string> words = words_of(text_of(input));
  std::vector<const char*> arguments;
  for (const std::string& word : words) arguments.push_back(word.c_str());
  p->VERSION = "version\n";
  if (came_back([&] { GetCmd(p, static_cast<int>(arguments.size()), arguments.data()); })) {
    require(arguments.size() % 2 == 1, "pairs of key and value");
  }
}

void fuzz_alias(FuzzInput input) {
  Params p;
  AliasTable table;
  bool read = false;
  const std::string path = scratch_file("zelvan_alias.dat", text_of(input));
  require(came_back([&] { read = read_aliases(path.c_str(), table, &p); }),
          "an alias file never ends the run");
  require(read == (p.SUCCESS != -1), "SUCCESS tells whether the file was read");
  require(read || table.empty(), "a refused file leaves no entry");
  for (const AliasEntry& entry : table) {
    require(!entry.words.empty() && entry.words[0] == entry.name, "the key is its own first word");
    for (const UTstring& word : entry.words) {
      require(alias(UTcat({"-", word}).c_str(), entry.name.c_str(), table) == 0, "every word names its key");
    }
  }
}

void fuzz_gap_defaults(FuzzInput input) {
  Params p = default_params();
  bool read = false;
  const std::string path = scratch_file("zelvan_gapdefs.dat", text_of(input));
  require(came_back([&] { read = GetGaps(path.c_str(), &p); }), "a gap-defaults file never ends the run");
  require(read == (p.SUCCESS == 1), "SUCCESS tells whether the file was read");
  require(p.NGAPDEFS == static_cast<int32_t>(p.GAPDEFS.size()) && p.NGAPDEFS <= p.GAPDEFS_CAPACITY,
          "entries");
  require(read || p.NGAPDEFS == 0, "a refused file leaves no entry");
  if (p.NGAPDEFS == 0) return;
  const GapDefault& entry = p.GAPDEFS[0];
  p.MODE = entry.mode == 0 ? 210 : entry.mode == 2 ? 212 : entry.mode;
  p.MATRIX_FILE.name = entry.matrix;
  setgapdefs(&p);
  const bool is_family = entry.mode != 200 && entry.mode != 210 && entry.mode != 202 && entry.mode != 212;
  require(!is_family || (p.LD_PEN == entry.ld_pen && p.FSE_PEN == entry.fse_pen),
          "the first entry that fits");
}
