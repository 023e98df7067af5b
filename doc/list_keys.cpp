// Writes the list of keys for the manual, in Markdown: names, meaning, kind of value, what is built in and what
// the shipped configuration sets.
//   list_keys CONFIGURATION DATA    the folder of the three configuration files; the folder that they name as
//                                   that of the data, shown as DATA
#include <cctype>
#include <cstdio>
#include <cstring>

#include "driver/key_table.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr const char* NO_EFFECT = "accepted for older configurations, without effect";

const char* kind_of_value(KeyType type) {
  switch (type) {
    case KeyType::INT:
    case KeyType::PRECISION:
      return "whole number";
    case KeyType::INT_SCALED:
      return "whole number, in matrix units";
    case KeyType::REAL_SCALED:
      return "number, in matrix units";
    case KeyType::REAL_TRUNCATED:
    case KeyType::FLOAT:
    case KeyType::DOUBLE:
      return "number";
    case KeyType::CHAR:
      return "one character";
    case KeyType::FILE_NAME:
    case KeyType::STREAM_IN:
    case KeyType::STREAM_OUT:
      return "file name";
    case KeyType::TEXT:
      return "path";
    case KeyType::DATABASE_ROOT:
      return "name";
  }
  return "";
}

template <class T>
const T* field_of(const KeyEntry& key, const Params& p) {
  const auto* field = std::get_if<T Params::*>(&key.field);
  return field == nullptr ? nullptr : &(p.**field);
}

// The value of a key as it would stand in a configuration file; empty for a stream.
UTstring value_text(const KeyEntry& key, const Params& p) {
  if (const char* character = field_of<char>(key, p)) return UTstring(1, *character);
  if (const FileRec* file = field_of<FileRec>(key, p)) return file->name;
  if (const UTstring* text = field_of<UTstring>(key, p)) return *text;
  double number = 0;
  if (const int32_t* whole = field_of<int32_t>(key, p)) {
    const bool scaled = key.type == KeyType::INT_SCALED || key.type == KeyType::REAL_SCALED;
    number = *whole / (scaled ? static_cast<double>(p.PRECISION) : 1.0);
  } else if (const float* real = field_of<float>(key, p)) {
    number = static_cast<double>(*real);
  } else if (const double* wide = field_of<double>(key, p)) {
    number = *wide;
  } else {
    return "";
  }
  char digits[32];
  std::snprintf(digits, sizeof digits, field_of<int32_t>(key, p) ? "%.10g" : "%.6g", number);
  return digits;
}

// A value as the manual shows it.
UTstring shown(const UTstring& value, const char* data) {
  if (value == " ") return "a blank";
  if (value.starts_with(data)) return UTcat({"`DATA", value.c_str() + std::strlen(data), "`"});
  return UTcat({"`", value, "`"});
}

void print_key(const AliasEntry& entry, const KeyEntry& key, const Params& shipped, const char* data) {
  Params built_in;
  set_defaults(&built_in);
  const UTstring value = value_text(key, built_in);
  const UTstring set = value_text(key, shipped);

  std::printf("`%s`", key.name);
  for (const UTstring& word : entry.words) {
    if (word != key.name) std::printf(", `-%s`", word.c_str());
  }
  UTstring meaning = entry.comment.substr(entry.comment.find_first_not_of(' '));
  if (!value.empty()) meaning = meaning.substr(0, meaning.rfind("; default "));  // it is told below
  meaning[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(meaning[0])));
  std::printf("\n:   %s. (%s", meaning.c_str(), kind_of_value(key.type));
  if (!value.empty()) std::printf("; built in: %s", shown(value, data).c_str());
  if (set != value) std::printf("; shipped: %s", shown(set, data).c_str());
  std::printf(")\n\n");
}

// Keys in the order of the alias file, those without effect in one paragraph below.
bool print_keys(const char* configuration, const char* data) {
  Params shipped = GetPars(UTcat({configuration, "/zelvan_defaults.dat"}).c_str(),
                           UTcat({configuration, "/zelvan_alias.dat"}).c_str());
  if (shipped.SUCCESS != 1) return false;
  UTstring without_effect;
  for (const AliasEntry& entry : shipped.ALIASES) {
    const KeyEntry* key = find_key(entry.name.c_str(), &shipped);
    if (key == nullptr) {
      std::fprintf(stderr, "The alias file names %s, which is no key\n", entry.name.c_str());
      return false;
    }
    if (entry.comment.find(NO_EFFECT) == UTstring::npos) {
      print_key(entry, *key, shipped, data);
    } else {
      without_effect += UTcat({without_effect.empty() ? "`" : ", `", entry.name, "`"});
    }
  }
  std::printf("Accepted for older configurations, without any effect: %s.\n", without_effect.c_str());
  return std::fflush(stdout) == 0;
}

}  // namespace
}  // namespace zelvan

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("list_keys CONFIGURATION DATA\n", stderr);
    return 2;
  }
  zelvan::UTinitfile();
  return zelvan::print_keys(argv[1], argv[2]) ? 0 : 1;
}
