// The scores and penalties of one scan in the form that vector kernels read.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "align/scan/scan_kernel.h"
#include "align/simd/aligned_block.h"
#include "util/memory.h"

namespace zelvan {

// What every target is scored against, whatever the kernel.
struct ScanScores {
  Recurrence recurrence{};
  const LookupTable* table = nullptr;  // not owned; rows are residue codes
  int32_t positions = 0;               // query residues; query position i (1..positions) is entry i of a row
  bool uniform = true;                 // the penalties are the same at every query position
  UTvector<int32_t> extend;            // [positions]: penalty of query position i in entry i-1
  UTvector<int32_t> open;              // the same; empty: every gap position costs `extend`
  int32_t shift = 0;                   // penalty of a frame shift; where the recurrence has one
};

// The scores divided by their greatest common divisor, equal query positions stored once.
struct LaneScores {
  int32_t unit = 1;  // score = unit x lane value
  int32_t positions = 0;
  UTvector<int32_t> rows;    // [distinct rows][ROW_CODES]; PAD_CODE has the score of no code: the lowest
  UTvector<int32_t> row_of;  // [positions]
  UTvector<int32_t> extend;  // [positions], divided
  UTvector<int32_t> open;
  int32_t shift = 0;
  int32_t lowest_score = 0;  // over rows, divided
  int32_t highest_score = 0;
  int32_t lowest_penalty = 0;
  int32_t highest_penalty = 0;
};

// make_lane_scores - the scores of a scan in the form that every width starts from.
// In     scores.table->rows < ROW_CODES, scores.positions >= 1
LaneScores make_lane_scores(const ScanScores& scores);

// fits - whether every score and penalty can be held in lanes of this width and is treated exactly there.
bool fits(const LaneScores& scores, LaneWidth width);

// The scores in the layout of one kernel.
struct LaneTable {
  AlignedBlock rows;
  UTvector<uint32_t> open;  // as in KernelCall
  UTvector<uint32_t> extend;
  uint32_t shift = 0;
};

// make_lane_table - the same for the kernel of this width and shape.
// In     scores that fit the width
LaneTable make_lane_table(const LaneScores& scores, LaneWidth width, const KernelShape& shape);

}  // namespace zelvan
