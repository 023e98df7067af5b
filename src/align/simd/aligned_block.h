// Working storage for vector kernels: a block whose first byte stands on a cache line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "util/memory.h"

namespace zelvan {

// Moved with its storage, never copied: the copy would point into the storage of the original.
struct AlignedBlock {
  UTvector<uint8_t> storage;
  uint8_t* data = nullptr;  // into storage, on a multiple of 64

  AlignedBlock() = default;
  AlignedBlock(AlignedBlock&&) = default;
  AlignedBlock& operator=(AlignedBlock&&) = default;
};

// resize_block - `size` bytes, all 0.
inline void resize_block(AlignedBlock& block, std::size_t size) {
  constexpr std::size_t LINE = 64;
  block.storage.assign(size + LINE, 0);
  void* first = block.storage.data();
  std::size_t room = block.storage.size();
  block.data = static_cast<uint8_t*>(std::align(LINE, size, first, room));
}

}  // namespace zelvan
