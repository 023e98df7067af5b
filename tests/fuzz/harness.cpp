#include "harness.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <set>

#include "driver/alias.h"
#include "driver/key_table.h"
#include "util/streams.h"
#include "util/timing.h"

extern "C" {
// The linker sends every call of fopen and fclose here (--wrap), and calls of __real_* to the library.
// NOLINTBEGIN(bugprone-reserved-identifier)
FILE* __real_fopen(const char* name, const char* mode);
int __real_fclose(FILE* stream);
FILE* __wrap_fopen(const char* name, const char* mode);
int __wrap_fclose(FILE* stream);
// NOLINTEND(bugprone-reserved-identifier)
}

namespace {

const std::string DATA = ZELVAN_SOURCE_DIR "/data/";
std::set<FILE*> open_streams;
std::set<std::string> scratch_files;
bool in_case = false;

// The file in which the fuzzer keeps an input that broke something: it is written from within the case.
bool is_finding(const char* name) {
  for (const char* kind : {"crash-", "timeout-", "oom-", "slow-unit-"}) {
    if (std::strstr(name, kind) != nullptr) return true;
  }
  return false;
}

// Removed when the program ends.
struct ScratchDirectory {
  std::string path;
  ScratchDirectory() {
    // In memory where that is possible.
    path = std::filesystem::exists("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path().string();
    path += "/zelvan_fuzz_XXXXXX";
    if (mkdtemp(path.data()) == nullptr) std::abort();
  }
  ~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
};

bool lies_in(const std::string& directory, const std::string& name) {
  return name.compare(0, directory.size(), directory) == 0 && name.find("..") == std::string::npos;
}

FILE* null_stream() {
  static FILE* const stream = __real_fopen("/dev/null", "w");
  return stream;
}

const AliasTable& shipped_aliases() {
  static const AliasTable aliases = [] {
    Params p;
    AliasTable table;
    require(read_aliases(shipped_file("config/zelvan_alias.dat").c_str(), table, &p), "the shipped aliases");
    return table;
  }();
  return aliases;
}

}  // namespace

FILE* __wrap_fopen(const char* name, const char* mode) {
  if (!in_case || is_finding(name)) return __real_fopen(name, mode);
  const bool reading = mode[0] == 'r';
  const bool is_ours = lies_in(scratch_directory(), name) || (reading && lies_in(DATA, name));
  if (reading && !is_ours) {
    errno = ENOENT;
    return nullptr;
  }
  FILE* const stream = __real_fopen(is_ours ? name : "/dev/null", mode);
  if (stream != nullptr) open_streams.insert(stream);
  return stream;
}

int __wrap_fclose(FILE* stream) {
  open_streams.erase(stream);
  return __real_fclose(stream);
}

const std::string& scratch_directory() {
  static const ScratchDirectory directory;
  return directory.path;
}

std::string shipped_file(const char* name) {
  return DATA + name;
}

void end_case() {
  in_case = false;
  for (FILE* stream : open_streams) __real_fclose(stream);
  open_streams.clear();
  for (const std::string& path : scratch_files) std::remove(path.c_str());
  scratch_files.clear();
}

void begin_case() {
  in_case = true;
  // The few messages that go to the process's own streams are as quiet.
  std_in = stdin;
  std_out = stdout = null_stream();
  std_err = stderr = null_stream();
  UT_reset_times();
}

std::string scratch_file(const char* name, std::string_view content) {
  std::string path = scratch_directory() + "/" + name;
  FILE* const stream = __real_fopen(path.c_str(), "wb");
  require(stream != nullptr && std::fwrite(content.data(), 1, content.size(), stream) == content.size(),
          "room for a scratch file");
  __real_fclose(stream);
  scratch_files.insert(path);
  return path;
}

void require(bool holds, const char* what) {
  if (holds) return;
  dprintf(STDERR_FILENO, "Broken: %s\n", what);
  std::abort();
}

void require_status(int status) {
  require(status == -1 || status == 0 || status == 1, "an exit status that there is");
}

Params default_params() {
  Params p;
  set_defaults(&p);
  p.ALIASES = shipped_aliases();
  p.STDOUT = std_out;
  p.STDERR = std_err;
  p.MAX_NSEQ = 1000;
  p.QSEQ_FORMAT = 1;
  p.MATRIX_DIR = shipped_file("matrices").c_str();
  p.GENERAL_DIR = shipped_file("codons").c_str();
  p.MATRIX_FILE.name = "BLOSUM62";
  return p;
}

void set_key(Params& p, const char* key, const std::string& value) {
  const KeyEntry* entry = find_key(key, &p);
  require(entry != nullptr, key);
  store_value(*entry, value.c_str(), "getcmd", &p);
}

const ScoreMatrix& shipped_matrix(const Params& p) {
  static const ScoreMatrix* const matrix = [&p] {
    Params copy = p;
    copy.MATRIX_FILE.name = "BLOSUM62";
    return getmat(&copy);
  }();
  return *matrix;
}

int32_t Choices::number(int32_t low, int32_t high) {
  const auto range = static_cast<uint64_t>(static_cast<int64_t>(high) - low) + 1;
  uint64_t value = 0;
  for (uint64_t reach = 1; reach < range && at != end; reach <<= 8) value = value << 8 | *at++;
  return static_cast<int32_t>(low + static_cast<int64_t>(value % range));
}
