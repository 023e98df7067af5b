#include "driver/alias.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>

#include "driver/config_file.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr std::size_t LETTERS_PER_SLIP = 3;   // one wrong letter in so many is a slip
constexpr std::size_t LONGEST_MISSPELT = 64;  // what is longer is no misspelt key

// The fewest letters to put in, take out, replace or exchange with their neighbour to turn one word into the
// other; capitals count as small letters.
std::size_t edit_distance(std::string_view a, std::string_view b) {
  const auto same = [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
  };
  UTvector<UTvector<std::size_t>> cost(a.size() + 1, UTvector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        cost[i][j] = i + j;
        continue;
      }
      const std::size_t replaced = cost[i - 1][j - 1] + (same(a[i - 1], b[j - 1]) ? 0 : 1);
      cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, replaced});
      if (i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1])) {
        cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
      }
    }
  }
  return cost[a.size()][b.size()];
}

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

const char* nearest_word(const char* token, const AliasTable& table) {
  const std::string_view wanted = token + std::strspn(token, "-");
  if (wanted.size() > LONGEST_MISSPELT) return nullptr;
  std::size_t smallest = wanted.size() / LETTERS_PER_SLIP + 1;  // one more than is near
  const UTstring* nearest = nullptr;
  for (const AliasEntry& entry : table) {
    const UTstring* const before = nearest;
    for (const UTstring& word : entry.words) {
      const std::size_t distance = edit_distance(wanted, word);
      // of the spellings of one key the later, in small letters, is the one that people type
      if (distance < smallest || (distance == smallest && nearest != before)) {
        smallest = distance;
        nearest = &word;
      }
    }
  }
  return nearest == nullptr ? nullptr : nearest->c_str();
}

}  // namespace zelvan
