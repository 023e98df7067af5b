#include "seq/sequence.h"

#include <algorithm>

#include "util/buffer_sizes.h"

namespace zelvan {
namespace {

// The block to append `size` bytes to. A vector that stays within its capacity does not move its bytes.
UTvector<char>& block_with_room(SeqStore& store, std::size_t size) {
  if (store.blocks.empty() || store.blocks.back().capacity() - store.blocks.back().size() < size) {
    store.blocks.emplace_back();
    store.blocks.back().reserve(std::max(size, SEQ_BLOCK_SIZE));
  }
  return store.blocks.back();
}

}  // namespace

SeqRec store_sequence(SeqStore& store, const char* id, int32_t ilen, const char* title, int32_t tlen,
                      const char* residues, int32_t nres) {
  const std::size_t strings = static_cast<std::size_t>(ilen) + static_cast<std::size_t>(tlen) + 2;
  UTvector<char>& block = block_with_room(store, strings + static_cast<std::size_t>(nres) + 2);
  char* const start = block.data() + block.size();

  block.insert(block.end(), id, id + ilen);
  block.push_back('\0');
  block.insert(block.end(), title, title + tlen);
  block.push_back('\0');
  block.push_back(' ');
  block.insert(block.end(), residues, residues + nres);
  block.push_back('\0');

  SeqRec record;
  record.id = start;
  record.title = start + ilen + 1;
  record.seq = reinterpret_cast<int8_t*>(start + strings);
  record.ilen = ilen;
  record.tlen = tlen;
  record.len = nres + 2;
  return record;
}

void freeseqs(SeqStore& store) {
  store = SeqStore();
}

}  // namespace zelvan
