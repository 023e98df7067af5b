#include "driver/params.h"

#include "driver/alias.h"
#include "driver/config_file.h"
#include "driver/key_table.h"
#include "util/failure.h"
#include "util/text.h"

namespace zelvan {
namespace {

// Applies one line of the defaults file; false after a report. What follows the value is ignored.
bool apply_line(const ConfigFile& file, Params* p) {
  TokenList tokens;
  if (!UTgettokens(p->TOKEN_SEPARATORS.c_str(), file.text.data(), tokens)) return true;
  const UTstring& token = tokens.tokens[0];
  if (token[0] == '#') return true;
  const KeyEntry* key = find_key(token.c_str(), p);
  if (key == nullptr) {
    std::fprintf(p->STDERR, "Unrecognised Parameter Command\n%s \nFile: %s\n", token.c_str(), file.path);
    return false;
  }
  if (tokens.count < 2) {
    std::fprintf(p->STDERR, "No value for %s in line %d of %s: write it after the key, e.g. TIME 1\n",
                 token.c_str(), file.line_number, file.path);
    return false;
  }
  store_value(*key, tokens.tokens[1].c_str(), "getpars", p);
  return true;
}

}  // namespace

Params GetPars(const char* defaults_path, const char* alias_path) {
  Params record;
  Params* const p = &record;
  set_defaults(p);
  p->SUCCESS = -1;
  ConfigFile file;
  if (!open_config(file, defaults_path, "getpars", p)) {
    report_config(file, "Error opening Parameter file");
    return record;
  }
  if (!read_aliases(alias_path, p->ALIASES, p)) {
    UTerror("Error processing alias file");
    close_config(file);
    return record;
  }
  bool applied = true;
  while (applied && next_line(file)) applied = apply_line(file, p);
  const bool read_whole = close_config(file);
  if (applied && read_whole) p->SUCCESS = 1;
  return record;
}

}  // namespace zelvan
