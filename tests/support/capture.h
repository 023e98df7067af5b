// Helpers of tests that look at what a routine writes, or that give it a file to read.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "util/streams.h"

namespace zelvan {

// written - everything that `write` puts on the stream it is given.
template <class Write>
std::string written(Write write) {
  char* text = nullptr;
  std::size_t size = 0;
  FILE* stream = open_memstream(&text, &size);
  write(stream);
  std::fclose(stream);
  const std::string result(text, size);
  std::free(text);
  return result;
}

// diverted - everything that `run` writes to a stream of the program, std_err or std_out.
template <class Run>
std::string diverted(FILE*& program_stream, Run run) {
  FILE* const kept = program_stream;
  const std::string result = written([&](FILE* stream) {
    program_stream = stream;
    run();
  });
  program_stream = kept;
  return result;
}
template <class Run>
std::string reported(Run run) {
  return diverted(std_err, run);
}
template <class Run>
std::string printed(Run run) {
  return diverted(std_out, run);
}

// The places of a text in another.
inline int32_t count_of(const std::string& text, const std::string& part) {
  int32_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// A directory that lives as long as the object.
struct TemporaryDirectory {
  std::filesystem::path path;

  explicit TemporaryDirectory(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
    std::string name = (parent / "zelvan_test_XXXXXX").string();
    path = mkdtemp(name.data());
  }
  ~TemporaryDirectory() { std::filesystem::remove_all(path); }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  // Writes a file in the directory and returns its path.
  std::string file(const char* name, std::string_view content) const {
    std::ofstream(path / name, std::ios::binary) << content;
    return (path / name).string();
  }
  std::string at(const char* name) const { return (path / name).string(); }

  // Runs `run` with this as the current directory.
  template <class Run>
  void inside(Run run) const {
    const std::filesystem::path kept = std::filesystem::current_path();
    std::filesystem::current_path(path);
    run();
    std::filesystem::current_path(kept);
  }
};

inline std::string file_content(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace zelvan
