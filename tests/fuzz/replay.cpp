// Runs the fuzz targets without a fuzzer: replay TARGET CORPUS SECONDS goes through the files of a corpus and then
// through mutations of them, the same ones in every run, until the time is over. It leaves the input that broke
// something in "crash-TARGET". Built with libFuzzer, the targets have programs of their own instead.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "harness.h"
#include "targets.h"

namespace {

struct Target {
  const char* name;
  void (*run)(FuzzInput);
};
constexpr Target TARGETS[] = {
    {"defaults", fuzz_defaults},
    {"alias", fuzz_alias},
    {"gap_defaults", fuzz_gap_defaults},
    {"matrix_pir", fuzz_matrix_pir},
    {"matrix_ncbi", fuzz_matrix_ncbi},
    {"fasta", fuzz_fasta},
    {"pir", fuzz_pir},
    {"codon", fuzz_codon},
    {"binary_database", fuzz_binary_database},
    {"score_list", fuzz_score_list},
    {"scan", fuzz_scan},
    {"search", fuzz_search},
};

using Input = std::vector<uint8_t>;
constexpr std::size_t LONGEST = 4096;

std::string crash_file;
Input current;

void run_case(const Target& target, const Input& input) {
  current = input;
  begin_case();
  target.run(current);
  end_case();
}

std::vector<Input> read_corpus(const char* directory) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::vector<Input> corpus;
  for (const auto& path : paths) {
    std::ifstream stream(path, std::ios::binary);
    corpus.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
  }
  return corpus;
}

Input mutation(const std::vector<Input>& corpus, std::mt19937& random) {
  const auto below = [&random](std::size_t n) { return n == 0 ? 0 : random() % n; };
  Input input = corpus[below(corpus.size())];
  for (std::size_t left = 1 + below(6); left > 0; --left) {
    const std::size_t at = below(input.size() + 1);
    const auto place = input.begin() + static_cast<std::ptrdiff_t>(at);
    switch (below(5)) {
      case 0:
        input.insert(place, static_cast<uint8_t>(random()));
        break;
      case 1:
        if (at < input.size()) input[at] = static_cast<uint8_t>(random());
        break;
      case 2:
        if (at < input.size()) input[at] = static_cast<uint8_t>(input[at] ^ 1U << below(8));
        break;
      case 3:
        input.erase(place, place + static_cast<std::ptrdiff_t>(
                                       below(std::min<std::size_t>(input.size() - at, 64) + 1)));
        break;
      default: {
        const Input& other = corpus[below(corpus.size())];
        const std::size_t from = below(other.size());
        const std::size_t size = below(other.size() - from + 1);
        const Input piece(other.begin() + static_cast<std::ptrdiff_t>(from),
                          other.begin() + static_cast<std::ptrdiff_t>(from + size));
        input.insert(place, piece.begin(), piece.end());
      }
    }
  }
  if (input.size() > LONGEST) input.resize(LONGEST);
  return input;
}

extern "C" void keep_current() {
  std::ofstream(crash_file, std::ios::binary)
      .write(reinterpret_cast<const char*>(current.data()), static_cast<std::streamsize>(current.size()));
}

void on_signal(int number) {
  keep_current();
  std::signal(number, SIG_DFL);
  std::raise(number);
}

}  // namespace

// In programs with sanitizers.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

int main(int argc, char** argv) {
  FILE* const terminal = stdout;
  const Target* const target =
      argc == 4 ? std::find_if(std::begin(TARGETS), std::end(TARGETS),
                               [&](const Target& t) { return std::strcmp(t.name, argv[1]) == 0; })
                : std::end(TARGETS);
  if (target == std::end(TARGETS)) {
    std::fputs("Usage: replay TARGET CORPUS SECONDS\n", stderr);
    return 2;
  }
  crash_file = std::string("crash-") + target->name;
  if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(keep_current);
  for (const int number : {SIGABRT, SIGSEGV, SIGFPE, SIGBUS, SIGILL}) std::signal(number, on_signal);

  const std::vector<Input> corpus = read_corpus(argv[2]);
  require(!corpus.empty(), "a corpus");
  for (const Input& input : corpus) run_case(*target, input);
  std::mt19937 random(20021107);
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(std::atof(argv[3]));
  long mutations = 0;
  for (; std::chrono::steady_clock::now() < end; ++mutations) run_case(*target, mutation(corpus, random));
  std::fprintf(terminal, "%s: %zu files, %ld mutations\n", target->name, corpus.size(), mutations);
  return 0;
}
