#include "bdb/volume_list.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "util/failure.h"
#include "util/file_identity.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr const char* FIRST_LINE = "ZELVAN volumes 1\n";

bool exists(const UTstring& name) {
  return access(name.c_str(), F_OK) == 0;
}

// The number in ".NN" of a volume, or -1.
int32_t volume_number(std::string_view digits) {
  int32_t number = -1;
  const std::errc status = std::from_chars(digits.data(), digits.data() + digits.size(), number).ec;
  char written[16];
  std::snprintf(written, sizeof written, "%02d", number);
  return status == std::errc() && digits == written ? number : -1;
}

// Reads the text of a list word by word.
struct Words {
  const char* at;
  bool good = true;
};

void expect(Words& words, const char* text) {
  const std::size_t length = std::strlen(text);
  words.good = words.good && std::strncmp(words.at, text, length) == 0;
  if (words.good) words.at += length;
}

// A number of the given base from 0 to `most`, and the character behind it.
uint64_t number(Words& words, char behind, uint64_t most, int base = 10) {
  uint64_t value = 0;
  const auto [end, status] = std::from_chars(words.at, words.at + std::strlen(words.at), value, base);
  words.good = words.good && status == std::errc() && *end == behind && value <= most;
  if (words.good) words.at = end + 1;
  return words.good ? value : 0;
}

template <class T>
T total(Words& words, const char* name, T most) {
  expect(words, name);
  return static_cast<T>(number(words, '\n', static_cast<uint64_t>(most)));
}

bool adds_up(const VolumeList& list) {
  VolumeList sum;
  for (const VolumeEntry& volume : list.volumes) {
    sum.nseq += volume.nseq;
    sum.nres += volume.nres;
    sum.totchar += volume.totchar;
  }
  int64_t counted = 0;
  for (const int64_t count : list.counts) counted += count;
  return sum.nseq == list.nseq && sum.nres == list.nres && sum.totchar == list.totchar &&
         counted == list.nres;
}

}  // namespace

UTvector<UTstring> volume_files(const UTstring& name, int32_t first) {
  UTvector<UTstring> files;
  const UTstring folder = UTfolder(name);
  const UTstring start =
      UTcat({std::string_view(database_stem(name)).substr(folder == "." ? 0 : folder.size()), "."});
  const UTstring ending = name.substr(database_stem(name).size());
  DIR* const entries = opendir(folder.c_str());
  if (entries == nullptr) return files;
  while (const dirent* entry = readdir(entries)) {
    const std::string_view file = entry->d_name;
    if (!file.starts_with(start) || !file.ends_with(ending) || file.size() < start.size() + ending.size()) {
      continue;
    }
    const std::string_view digits = file.substr(start.size(), file.size() - start.size() - ending.size());
    if (volume_number(digits) >= first) files.push_back(UTcat({folder == "." ? UTstring() : folder, file}));
  }
  closedir(entries);
  std::sort(files.begin(), files.end());
  return files;
}

bool is_volume_set(const UTstring& index_name) {
  const UTstring list = volumes_name(index_name);
  const UTstring volume = volume_name(index_name, 0);
  if (!exists(index_name)) return exists(volume) || exists(list);
  if (!exists(volume)) return false;
  UTend_input(
      std_err,
      "There are two databases of one name: %s, and the volumes %s and on. Remove or rename the files of "
      "one of them, %s included with the volumes\n",
      index_name.c_str(), volume.c_str(), list.c_str());
}

uint64_t fingerprint(const char* bytes, std::size_t size) {
  constexpr uint64_t ODD = 0x9E3779B97F4A7C15U;
  uint64_t value = size * ODD;
  for (std::size_t at = 0; at < size; at += sizeof value) {
    uint64_t word = 0;
    std::memcpy(&word, bytes + at, std::min(sizeof word, size - at));
    value = std::rotl((value ^ word) * ODD, 29);
  }
  return value;
}

UTstring list_text(const VolumeList& list) {
  UTstring text = FIRST_LINE;
  char line[128];
  const auto add = [&](int length) { text.append(line, static_cast<std::size_t>(length)); };
  add(std::snprintf(line, sizeof line,
                    "sequences %" PRId64 "\nresidues %" PRId64 "\ncharacters %" PRId64 "\n", list.nseq,
                    list.nres, list.totchar));
  for (std::size_t byte = 0; byte < list.counts.size(); ++byte) {
    if (list.counts[byte] == 0) continue;
    add(std::snprintf(line, sizeof line, "count %zu %" PRId64 "\n", byte, list.counts[byte]));
  }
  for (const VolumeEntry& volume : list.volumes) {
    add(std::snprintf(line, sizeof line, "volume %d %d %d %016" PRIx64 "\n", volume.nseq, volume.nres,
                      volume.totchar, volume.fingerprint));
  }
  return text.append("end\n");
}

const char* read_list(const char* text, VolumeList& out_list) {
  constexpr uint64_t MOST = INT32_MAX;
  Words words{text};
  VolumeList list;
  expect(words, FIRST_LINE);
  list.nseq = total<int64_t>(words, "sequences ", INT32_MAX);
  list.nres = total<int64_t>(words, "residues ", INT64_MAX);
  list.totchar = total<int64_t>(words, "characters ", INT64_MAX);
  while (words.good && *words.at == 'c') {
    expect(words, "count ");
    const uint64_t byte = number(words, ' ', list.counts.size() - 1);
    list.counts[byte] = static_cast<int64_t>(number(words, '\n', INT64_MAX >> 8));
  }
  while (words.good && *words.at == 'v') {
    expect(words, "volume ");
    VolumeEntry volume;
    volume.nseq = static_cast<int32_t>(number(words, ' ', MOST));
    volume.nres = static_cast<int32_t>(number(words, ' ', MOST));
    volume.totchar = static_cast<int32_t>(number(words, ' ', MOST));
    volume.fingerprint = number(words, '\n', UINT64_MAX, 16);
    list.volumes.push_back(volume);
  }
  expect(words, "end\n");
  if (!words.good || *words.at != '\0') return "it is not as a build writes it";
  if (list.volumes.empty() || !adds_up(list)) return "its numbers do not add up";
  out_list = std::move(list);
  return nullptr;
}

}  // namespace zelvan
