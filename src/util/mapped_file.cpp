#include "util/mapped_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>

#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

// What the handler needs, made ready before: it may interrupt an allocation.
std::array<char, 4000> lost_sentence;
std::size_t lost_length = 0;
int lost_descriptor = STDERR_FILENO;

extern "C" void tell_lost_file(int) {
  [[maybe_unused]] const ssize_t told = write(lost_descriptor, lost_sentence.data(), lost_length);
  UTend_at_once(-1);
}

}  // namespace

MappedFile UTmap_file(int descriptor, int64_t size) {
  if (size == 0) return {};
  void* const bytes = mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_SHARED, descriptor, 0);
  if (bytes == MAP_FAILED) return {};
  return {static_cast<const char*>(bytes), size};
}

void UTforget_pages(const MappedFile& file, int64_t from, int64_t to) {
  const int64_t page = sysconf(_SC_PAGESIZE);
  const int64_t first = from / page * page;
  const int64_t size = std::min(to, file.size) / page * page - first;
  if (size > 0) madvise(const_cast<char*>(file.bytes) + first, static_cast<std::size_t>(size), MADV_DONTNEED);
}

void UTunmap_file(MappedFile& file) {
  if (file.size > 0) munmap(const_cast<char*>(file.bytes), static_cast<std::size_t>(file.size));
  file = {};
}

void UTexpect_lost_files(const UTstring& sentence) {
  lost_length = std::min(sentence.size(), lost_sentence.size());
  std::copy_n(sentence.data(), lost_length, lost_sentence.data());
  lost_descriptor = fileno(std_err);
  struct sigaction action;
  std::memset(&action, 0, sizeof action);
  action.sa_handler = tell_lost_file;
  sigaction(SIGBUS, &action, nullptr);
}

}  // namespace zelvan
