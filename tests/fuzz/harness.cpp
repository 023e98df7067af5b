#include "harness.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <set>
#include <vector>

#include "driver/key_table.h"
#include "util/failure.h"
#include "util/streams.h"
#include "util/timing.h"

namespace zelvan {

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
// The linker sends every call of fopen and fclose here (--wrap), and calls of __real_* to the library.
FILE* __real_fopen(const char* name, const char* mode);
int __real_fclose(FILE* stream);
FILE* __wrap_fopen(const char* name, const char* mode);
int __wrap_fclose(FILE* stream);

// Blocks of absurd sizes are refused, as by a machine without room; what an ended run owned is lost. Short traces and
// a short quarantine make cases of many small blocks twice as fast.
const char* __asan_default_options();
const char* __asan_default_options() {
  return "allocator_may_return_null=1:detect_leaks=0:malloc_context_size=2:quarantine_size_mb=8";
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace {

const std::string DATA = ZELVAN_SOURCE_DIR "/data/";
std::vector<FILE*> open_streams;  // the latest at the end, where the library, too, looks for it first
std::set<std::string, std::less<>> scratch_files;  // of this case; those of earlier ones count as missing
bool in_case = false;

bool lies_in(const std::string& directory, std::string_view name) {
  return name.starts_with(directory) && name.find("..") == name.npos;
}

FILE* null_stream() {
  static FILE* const stream = __real_fopen("/dev/null", "w");
  return stream;
}

}  // namespace

FILE* __wrap_fopen(const char* name, const char* mode) {
  // The fuzzer keeps an input that broke something from within the case, and no routine under test writes in this mode.
  const bool is_finding = std::string_view(mode) == "wb";
  if (!in_case || is_finding) return __real_fopen(name, mode);
  const bool reading = mode[0] == 'r';
  const bool is_scratch = lies_in(scratch().at(""), name);
  if (is_scratch && !reading) scratch_files.insert(name);
  const bool is_ours =
      reading ? scratch_files.contains(std::string_view(name)) || lies_in(DATA, name) : is_scratch;
  if (reading && !is_ours) {
    errno = ENOENT;
    return nullptr;
  }
  FILE* const stream = __real_fopen(is_ours ? name : "/dev/null", mode);
  if (stream != nullptr) open_streams.push_back(stream);
  return stream;
}

int __wrap_fclose(FILE* stream) {
  const auto latest = std::find(open_streams.rbegin(), open_streams.rend(), stream);
  if (latest != open_streams.rend()) open_streams.erase(latest.base() - 1);
  return __real_fclose(stream);
}

// Takes the place of src/util/process_end.cpp.
void UTend_process(int status) {
  throw RunEnd{status};
}
void UTend_at_once(int status) {
  std::_Exit(status);
}

FuzzTarget find_target(const std::string& name) {
  for (const FuzzTargets* targets : {&reader_targets(), &search_targets()}) {
    if (const auto found = targets->find(name); found != targets->end()) return found->second;
  }
  require(false, "a target of that name");
  std::abort();
}

void run_target(FuzzTarget target, FuzzInput input) {
  in_case = true;
  // The few messages that go to the process's own streams are as quiet.
  std_in = stdin;
  std_out = stdout = null_stream();
  std_err = stderr = null_stream();
  UT_reset_times();
  target(input);
  in_case = false;
  for (; !open_streams.empty(); open_streams.pop_back()) __real_fclose(open_streams.back());
  scratch_files.clear();
}

const TemporaryDirectory& scratch() {
  const std::filesystem::path memory = "/dev/shm";  // ten times as fast as a disk
  static const TemporaryDirectory directory(
      std::filesystem::exists(memory) ? memory : std::filesystem::temp_directory_path());
  return directory;
}

std::string scratch_file(const char* name, std::string_view content) {
  return *scratch_files.insert(scratch().file(name, content)).first;
}

void require(bool holds, const char* what) {
  if (holds) return;
  dprintf(STDERR_FILENO, "Broken: %s\n", what);
  std::abort();
}

const Params& default_params() {
  static const Params params = [] {
    Params p;
    set_defaults(&p);
    p.STDOUT = p.STDERR = null_stream();
    p.MAX_NSEQ = 1000;
    p.QSEQ_FORMAT = 1;
    p.MATRIX_DIR = (DATA + "matrices").c_str();
    p.GENERAL_DIR = (DATA + "codons").c_str();
    p.MATRIX_FILE.name = "BLOSUM62";
    return p;
  }();
  return params;
}

const ScoreMatrix& shipped_matrix() {
  static const std::shared_ptr<const ScoreMatrix> matrix = [] {
    Params p = default_params();
    getmat(&p);
    return p.matrix;
  }();
  return *matrix;
}

int32_t Choices::number(int32_t low, int32_t high) {
  const auto range = static_cast<uint64_t>(static_cast<int64_t>(high) - low) + 1;
  uint64_t value = 0;
  for (uint64_t reach = 1; reach < range && !left.empty(); reach <<= 8) {
    value = value << 8 | static_cast<uint8_t>(left[0]);
    left.remove_prefix(1);
  }
  return static_cast<int32_t>(low + static_cast<int64_t>(value % range));
}

}  // namespace zelvan
