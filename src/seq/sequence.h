// Sequence records and the storage behind them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "util/memory.h"

namespace zelvan {

// One sequence. The three strings are not owned: they point into a SeqStore (sequences read from text) or
// into the one block of a binary database, which must outlive the record.
struct SeqRec {
  const char* id = nullptr;     // zero-terminated
  const char* title = nullptr;  // zero-terminated
  int8_t* seq = nullptr;        // pad (blank, gap code once encoded), residues 1..len-2, zero byte
  int32_t ilen = 0;             // length of id
  int32_t tlen = 0;             // length of title
  int32_t len = 0;              // stored length: residues + 2
};

// residues - the number of residues of a sequence (of bases, where it holds DNA).
inline int32_t residues(const SeqRec& seq) {
  return seq.len - 2;
}

// The largest stored length of a query: MP_LEN - 2 residues. The scalar scan kernels keep a row of that size.
constexpr int32_t MP_LEN = 16000;

// Owner of sequence strings: blocks of SEQ_BLOCK_SIZE bytes that are filled from the front and never move.
// Beyond the strings themselves a sequence costs four bytes; the unused tail of a block is never touched.
struct SeqStore {
  UTvector<UTvector<char>> blocks;  // the last one is being filled
};

// store_sequence - copies one sequence into the store, residues as given.
// In     residues[0..nres-1], nres <= 2^31 - 3; the pads are added here. Lengths as counted by the caller:
//        ilen and tlen without terminator
// Returns the record of the copy
SeqRec store_sequence(SeqStore& store, const char* id, int32_t ilen, const char* title, int32_t tlen,
                      const char* residues, int32_t nres);

// freeseqs - releases every string of the store; records that point into it become invalid.
void freeseqs(SeqStore& store);

}  // namespace zelvan
