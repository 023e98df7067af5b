#include "driver/alias.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "driver/config_file.h"
#include "util/text.h"

namespace zelvan {
namespace {

// One line, already split at "#", as an entry; false when it does not consist of words and a description.
bool read_entry(const TokenList& parts, AliasEntry& out_entry) {
  TokenList words;
  if (parts.count != 2 || !UTgettokens(" \t", parts.tokens[0].c_str(), words)) return false;
  out_entry.name = words.tokens[0];
  out_entry.words = words.tokens;
  out_entry.comment = parts.tokens[1];
  return true;
}

}  // namespace

bool read_aliases(const char* path, AliasTable& out_table, Params* p) {
  out_table.clear();
  ConfigFile file;
  if (!open_config(file, path, "read_aliases", p)) {
    report_config(file, "Error opening ALIAS file");
    p->SUCCESS = -1;
    return false;
  }
  bool well_formed = true;
  TokenList parts;
  while (well_formed && next_line(file) && UTgettokens("#\n", file.text.data(), parts)) {
    AliasEntry entry;
    well_formed = read_entry(parts, entry);
    if (well_formed) {
      out_table.push_back(entry);
    } else {
      report_malformed(file, "Should have text or newline after # symbol in alias file");
    }
  }
  const bool read_whole = close_config(file);
  if (well_formed && read_whole) return true;
  out_table.clear();
  p->SUCCESS = -1;
  return false;
}

int32_t alias(const char* token, const char* key, const AliasTable& table) {
  const std::string_view word = token[0] == '-' ? token + 1 : token;
  const std::string_view wanted = key;  // its length is taken once: most entries differ in theirs
  for (const AliasEntry& entry : table) {
    if (entry.name == wanted &&
        std::find(entry.words.begin(), entry.words.end(), word) != entry.words.end()) {
      return 0;
    }
  }
  return -1;
}

}  // namespace zelvan
