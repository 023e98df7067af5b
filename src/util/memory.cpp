#include "util/memory.h"

#include <sys/mman.h>

#include <cstdlib>
#include <memory>
#include <new>

#include "util/failure.h"

namespace zelvan {

void* UTmalloc(std::size_t size) {
  void* block = std::malloc(size > 0 ? size : 1);
  if (block == nullptr) UTend_memory("malloc error");
  return block;
}

void UTlarge_pages(void* block, std::size_t size) {
  constexpr std::size_t LARGE = std::size_t{2} << 20;
  void* at = block;
  if (size < 2 * LARGE || std::align(LARGE, LARGE, at, size) == nullptr) return;
  madvise(at, size / LARGE * LARGE, MADV_HUGEPAGE);
}

bool UThaveroom(std::size_t size) {
  // volatile, lest the compiler drops an allocation that is only tested and released
  void* volatile block = std::malloc(size > 0 ? size : 1);
  std::free(block);
  return block != nullptr;
}

void* UTrealloc(void* block, std::size_t size) {
  void* resized = std::realloc(block, size > 0 ? size : 1);
  if (resized == nullptr) UTend_memory("realloc error");
  return resized;
}

void UTfree(void* block) {
  if (block == nullptr) UTend_memory("Attempt to free NULL pointer");
  std::free(block);
}

}  // namespace zelvan

// What the standard library allocates by itself fails in the same way.
void* operator new(std::size_t size) {
  return zelvan::UTmalloc(size);
}
void* operator new[](std::size_t size) {
  return zelvan::UTmalloc(size);
}
// Without exceptions (temporary buffers of the sorts) a missing block is the library's to handle. Replaced
// as well, so that every block that delete sees comes from malloc.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size > 0 ? size : 1);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size > 0 ? size : 1);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}
