// The supply of database residues to the lanes of a vector kernel. Each lane takes the next sequence as soon
// as its last one ends, so that lanes stay busy whatever the lengths are.
#pragma once

#include <cstdint>

#include "align/scan/scan_kernel.h"
#include "align/simd/aligned_block.h"
#include "seq/residue_reader.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// Blocks of a full chunk. Residues are transposed by squares of 8 columns: a chunk has whole squares whatever
// the columns of a block are.
constexpr int32_t CHUNK_BLOCKS = 16;

// A sequence that ended in the chunk last filled.
struct LaneEnd {
  int32_t block;  // its best cell stands in best_before of this block
  int32_t lane;
  int32_t sequence;
};

struct LaneFeed {
  KernelShape shape{};
  ScanTargets targets;                       // not owned
  const UTvector<int32_t>* order = nullptr;  // sequence numbers, none without residues; not owned
  std::size_t next = 0;                      // of order
  struct Lane {
    const int8_t* at = nullptr;  // next residue of its sequence
    int32_t left = 0;            // residues to come
    int32_t sequence = -1;
    UTvector<int8_t> room;  // for the codes of a sequence that is stored otherwise
  };
  UTvector<Lane> lanes;

  // The chunk: what fill_chunk makes and a KernelCall points to.
  int32_t blocks = 0;
  AlignedBlock by_lane;  // [lanes][columns]: residues before they are transposed
  AlignedBlock residues;
  AlignedBlock boundaries;
  AlignedBlock begin_masks;
  UTvector<LaneEnd> ends;
};

// scan_order - the sequences with residues in an order that lets all lanes end at about the same time: those
// that would fill much of a lane's share first, the longest leading, then all others as they stand in the
// database, which reads it from end to end.
UTvector<int32_t> scan_order(const SeqRec* seqs, const UTvector<int32_t>& numbers, int32_t lanes);

// start_feed - makes ready to feed the sequences of `order`, which must outlive the feed like what
// the targets point to.
// In     shape: of the kernel that is fed, which has lanes
void start_feed(LaneFeed& feed, const KernelShape& shape, const ScanTargets& targets,
                const UTvector<int32_t>& order);

// fill_chunk - the next piece of all lanes: blocks, residues, boundaries, begin_masks and ends.
// Returns false when every sequence has ended before
bool fill_chunk(LaneFeed& feed);

}  // namespace zelvan
