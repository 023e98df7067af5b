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
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "harness.h"

namespace {

using Input = std::vector<uint8_t>;
constexpr std::size_t LONGEST = 4096;
constexpr std::size_t MEGABYTE = 1'000'000;

std::string crash_file;
Input current;

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

// In such a file a reader that goes back to the start for every line, or copies what it has, takes minutes.
Input repeated(const Input& seed) {
  Input input;
  while (!seed.empty() && input.size() < MEGABYTE) input.insert(input.end(), seed.begin(), seed.end());
  return input;
}

// One to six pieces, mostly short ones, are replaced by random bytes or by pieces of other files.
Input mutation(const std::vector<Input>& corpus, std::mt19937& random) {
  const auto below = [&random](std::size_t n) { return n == 0 ? 0 : random() % n; };
  Input input = corpus[below(corpus.size())];
  for (std::size_t left = 1 + below(6); left > 0; --left) {
    const std::size_t at = below(input.size() + 1);
    const std::size_t removed = below(std::min<std::size_t>(input.size() - at, below(4) == 0 ? 64 : 1) + 1);
    Input piece(below(3));
    for (uint8_t& byte : piece) byte = static_cast<uint8_t>(random());
    if (below(4) == 0) {
      const Input& other = corpus[below(corpus.size())];
      const auto from = other.begin() + static_cast<std::ptrdiff_t>(below(other.size()));
      piece.assign(
          from, from + static_cast<std::ptrdiff_t>(below(static_cast<std::size_t>(other.end() - from) + 1)));
    }
    const auto place = input.begin() + static_cast<std::ptrdiff_t>(at);
    input.insert(input.erase(place, place + static_cast<std::ptrdiff_t>(removed)), piece.begin(),
                 piece.end());
  }
  if (input.size() > LONGEST) input.resize(LONGEST);
  return input;
}

void keep_current() {
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
  require(argc == 4, "the arguments: TARGET CORPUS SECONDS");
  const FuzzTarget& target = find_target(argv[1]);
  crash_file = std::string("crash-") + target.name;
  if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(keep_current);
  for (const int number : {SIGABRT, SIGSEGV, SIGFPE, SIGBUS, SIGILL}) std::signal(number, on_signal);

  const std::vector<Input> corpus = read_corpus(argv[2]);
  require(!corpus.empty(), "a corpus");
  for (const Input& input : corpus) run_target(target, current = input);
  for (const FuzzTarget& reader : reader_targets()) {
    if (&reader != &target) continue;
    for (const Input& input : corpus) run_target(target, current = repeated(input));
  }
  std::mt19937 random(20021107);
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(std::atof(argv[3]));
  long mutations = 0;
  for (; std::chrono::steady_clock::now() < end; ++mutations)
    run_target(target, current = mutation(corpus, random));
  std::fprintf(terminal, "%s: %zu files, %ld mutations\n", target.name, corpus.size(), mutations);
  return 0;
}
