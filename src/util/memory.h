// Checked allocation. A request either succeeds or ends the run with a report (status 0): no caller tests for
// exhaustion. Containers get the same policy through UTallocator, so that records stay plain structs.
#pragma once

#include <cstddef>
#include <limits>
#include <new>
#include <string>
#include <vector>

namespace zelvan {

// UTmalloc - a block of `size` bytes, contents unset; "malloc error" and status 0 when there is none.
void* UTmalloc(std::size_t size);

// UTlarge_pages - asks for large pages behind a block that is about to be filled: taking hundreds of
// megabytes page by page costs as much time as filling them.
void UTlarge_pages(void* block, std::size_t size);

// UThaveroom - whether UTmalloc would succeed, for the few callers with a report of their own.
bool UThaveroom(std::size_t size);

// UTrealloc - `block` (may be null) resized to `size` bytes; "realloc error" and status 0 when there is no
// room.
void* UTrealloc(void* block, std::size_t size);

// UTfree - releases a block; a null block is a fault of the caller: "Attempt to free NULL pointer", status 0.
void UTfree(void* block);

template <class T>
struct UTallocator {
  using value_type = T;
  UTallocator() = default;
  template <class U>
  UTallocator(const UTallocator<U>&) {}
  T* allocate(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) {
      count = std::numeric_limits<std::size_t>::max() / sizeof(T);  // never to be had: ends in UTmalloc
    }
    return static_cast<T*>(UTmalloc(count * sizeof(T)));
  }
  void deallocate(T* block, std::size_t) { UTfree(block); }
  friend bool operator==(const UTallocator&, const UTallocator&) { return true; }
};

template <class T>
using UTvector = std::vector<T, UTallocator<T>>;
using UTstring = std::basic_string<char, std::char_traits<char>, UTallocator<char>>;

// UTbuffer - an array whose elements start unset, for contents that are read or copied in whole right away.
template <class T>
struct UTunset_allocator : UTallocator<T> {
  UTunset_allocator() = default;
  template <class U>
  UTunset_allocator(const UTunset_allocator<U>&) {}
  template <class U>
  void construct(U* at) {
    ::new (static_cast<void*>(at)) U;
  }
};
template <class T>
using UTbuffer = std::vector<T, UTunset_allocator<T>>;

}  // namespace zelvan
