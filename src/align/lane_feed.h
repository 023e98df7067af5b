// The supply of database residues to the lanes of a vector kernel. Each lane takes the next sequence as soon as
// its last one ends, so that lanes stay busy whatever the lengths are.
#pragma once

#include <cstdint>

#include "align/aligned_block.h"
#include "align/scan_kernel.h"
#include "seq/sequence.h"
#include "util/memory.h"

// A sequence that ended in the chunk last filled.
struct LaneEnd {
  int32_t block;  // its best cell stands in best_before of this block
  int32_t lane;
  int32_t sequence;
};

struct LaneFeed {
  KernelShape shape{};
  const SeqRec* seqs = nullptr;
  const UTvector<int32_t>* order = nullptr;  // sequence numbers, none without residues
  std::size_t next = 0;                      // of order
  struct Lane {
    const int8_t* at = nullptr;
    int32_t left = 0;
    int32_t sequence = -1;
  };
  UTvector<Lane> lanes;

  // The chunk: what fill_chunk makes and a KernelCall points to.
  int32_t blocks = 0;
  AlignedBlock by_lane;  // [lanes][columns]: residues before they are transposed
  AlignedBlock residues;
  AlignedBlock turns;
  AlignedBlock masks;
  UTvector<LaneEnd> ends;
};

// scan_order - the sequences with residues in an order that lets all lanes end at about the same time: those
// that would fill much of a lane's share first, the longest leading, then all others as they stand in the
// database, which reads it from end to end.
UTvector<int32_t> scan_order(const SeqRec* seqs, const UTvector<int32_t>& numbers, int32_t lanes);

// start_feed - `order` must outlive the feed.
void start_feed(LaneFeed& feed, const KernelShape& shape, const SeqRec* seqs, const UTvector<int32_t>& order);

// fill_chunk - the next piece of all lanes. Returns false when every sequence has ended.
bool fill_chunk(LaneFeed& feed);

// Blocks of a full chunk: whatever a block's width is, its columns are a multiple of 8.
constexpr int32_t CHUNK_BLOCKS = 16;
