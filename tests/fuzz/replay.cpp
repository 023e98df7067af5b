// Runs the fuzz targets without a fuzzer: replay TARGET CORPUS SECONDS goes through the files of a corpus, with readers
// also through files of a megabyte made of them, and then through mutations, the same ones in every run, until the time
// is over. It leaves the input that broke something in "crash-TARGET". Built with libFuzzer, the targets have programs
// of their own instead.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "harness.h"

namespace zelvan {
namespace {

constexpr std::size_t LONGEST = 4096;
constexpr std::size_t MEGABYTE = 1'000'000;

std::string crash_file;
std::string current;

std::vector<std::string> read_corpus(const char* directory) {
  std::set<std::string> paths;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) paths.insert(entry.path());
  std::vector<std::string> corpus;
  for (const std::string& path : paths) corpus.push_back(file_content(path));
  return corpus;
}

// In such a file a reader that goes back to the start for every line, or copies what it has, takes minutes.
std::string repeated(const std::string& seed) {
  std::string input;
  while (!seed.empty() && input.size() < MEGABYTE) input += seed;
  return input;
}

// One to six pieces, mostly short ones, are replaced by random bytes or by pieces of other files.
std::string mutation(const std::vector<std::string>& corpus, std::mt19937& random) {
  const auto below = [&random](std::size_t n) { return random() % n; };
  std::string input = corpus[below(corpus.size())];
  for (std::size_t left = 1 + below(6); left > 0; --left) {
    std::string piece(below(3), '\0');
    for (char& byte : piece) byte = static_cast<char>(random());
    if (below(4) == 0) {
      const std::string& other = corpus[below(corpus.size())];
      const std::size_t from = below(other.size() + 1);
      piece = other.substr(from, below(other.size() - from + 1));
    }
    const std::size_t at = below(input.size() + 1);
    const std::size_t removed = below(below(4) == 0 ? 65 : 2);
    input.replace(at, removed, piece);
  }
  input.resize(std::min(input.size(), LONGEST));
  return input;
}

void keep_current() {
  std::ofstream(crash_file, std::ios::binary) << current;
}

void on_signal(int number) {
  keep_current();
  std::signal(number, SIG_DFL);
  std::raise(number);
}

}  // namespace

// In programs with sanitizers.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

}  // namespace zelvan

int main(int argc, char** argv) {
  using namespace zelvan;
  FILE* const terminal = stdout;
  require(argc == 4, "the arguments: TARGET CORPUS SECONDS");
  const std::string name = argv[1];
  const FuzzTarget target = find_target(name);
  crash_file = "crash-" + name;
  if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(keep_current);
  for (const int number : {SIGABRT, SIGSEGV, SIGFPE, SIGBUS, SIGILL}) std::signal(number, on_signal);

  const std::vector<std::string> corpus = read_corpus(argv[2]);
  require(!corpus.empty(), "a corpus");
  for (const std::string& input : corpus) {
    run_target(target, current = input);
    if (reader_targets().contains(name)) run_target(target, current = repeated(input));
  }
  std::mt19937 random(20021107);
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(std::atof(argv[3]));
  long mutations = 0;
  for (; std::chrono::steady_clock::now() < end; ++mutations) {
    run_target(target, current = mutation(corpus, random));
  }
  std::fprintf(terminal, "%s: %zu files, %ld mutations\n", argv[1], corpus.size(), mutations);
  return 0;
}
