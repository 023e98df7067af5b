#include "align/scan/scan_engine.h"

#include <cstring>
#include <initializer_list>

#include "align/scan/lane_feed.h"

namespace zelvan {
namespace {

// More distinct query positions than this are no longer worth preparing per column.
constexpr std::size_t MAX_PREPARED = 64;

bool is_prepared(const ScanScores& scores, const LaneScores& lane, LaneWidth width) {
  return scores.uniform && width != LaneWidth::BITS32 && lane.rows.size() / ROW_CODES <= MAX_PREPARED;
}

template <class Lane>
int32_t read_lane(const uint8_t* vector, int32_t lane) {
  Lane value;
  std::memcpy(&value, vector + static_cast<std::size_t>(lane) * sizeof value, sizeof value);
  return value;
}

int32_t lane_value(const uint8_t* vector, int32_t lane, LaneWidth width) {
  switch (width) {
    case LaneWidth::BITS8:
      return read_lane<int8_t>(vector, lane);
    case LaneWidth::BITS16:
      return read_lane<int16_t>(vector, lane);
    case LaneWidth::BITS32:
      break;
  }
  return read_lane<int32_t>(vector, lane);
}

// The least lane value that may be the mark of an overflow. A lane that does not saturate would run over with
// the next highest score.
int32_t overflow_mark(const LaneScores& scores, LaneWidth width, const KernelShape& shape) {
  if (width == LaneWidth::BITS32) return INT32_MAX;
  const int32_t top = width == LaneWidth::BITS8 ? INT8_MAX : INT16_MAX;
  return shape.zero_score < 0 ? top : top - scores.highest_score;
}

// Whether the kernels have a tier of this width for these scores.
bool has_tier(const ScanScores& scores, const LaneScores& lane, InstructionSet set, LaneWidth width) {
  if (width == LaneWidth::BITS32) return true;
  return kernel_shape(set, width, scores.recurrence).lanes > 0 && fits(lane, width) &&
         (scores.recurrence.direct_narrow || is_prepared(scores, lane, width));
}

// The kernel's side of one tier. The call points into the blocks beside it.
struct Tier {
  KernelShape shape{};
  std::size_t vector_bytes = 0;
  LaneTable table;
  AlignedBlock state;
  AlignedBlock scratch;
  AlignedBlock best;
  AlignedBlock best_before;
  KernelCall call{};  // all but the chunk
};

// `lane` must outlive the tier.
Tier make_tier(const ScanScores& scores, const LaneScores& lane, LaneWidth width, InstructionSet set) {
  Tier tier;
  const KernelShape& shape = tier.shape = kernel_shape(set, width, scores.recurrence);
  const std::size_t vector = tier.vector_bytes = static_cast<std::size_t>(shape.lanes * shape.lane_bytes);
  const auto row_count = static_cast<int32_t>(lane.rows.size() / ROW_CODES);
  const bool prepared = is_prepared(scores, lane, width);
  tier.table = make_lane_table(lane, width, shape);
  resize_block(tier.state, static_cast<std::size_t>(lane.positions * shape.state_vectors) * vector);
  resize_block(tier.scratch, prepared ? static_cast<std::size_t>(row_count * shape.columns) * vector : 0);
  resize_block(tier.best, vector);
  resize_block(tier.best_before, (CHUNK_BLOCKS + 1) * vector);

  KernelCall& call = tier.call;
  call.width = width;
  call.source = prepared         ? ScoreSource::PREPARED
                : scores.uniform ? ScoreSource::DIRECT
                                 : ScoreSource::BY_POSITION;
  call.affine = !lane.open.empty();
  call.positions = lane.positions;
  call.rows = tier.table.rows.data;
  call.row_count = row_count;
  call.row_of = lane.row_of.data();
  call.open = tier.table.open.data();
  call.extend = tier.table.extend.data();
  call.shift = tier.table.shift;
  call.state = tier.state.data;
  call.scratch = tier.scratch.data;
  call.best = tier.best.data;
  call.best_before = tier.best_before.data;
  return tier;
}

// Scores the sequences of `numbers` by one tier and returns those whose lanes overflowed.
UTvector<int32_t> scan_tier(const ScanScores& scores, const LaneScores& lane, LaneWidth width,
                            InstructionSet set, RunKernel run_kernel, const ScanTargets& targets,
                            const UTvector<int32_t>& numbers, int32_t* out_scores, ScanTally& tally,
                            ScanMeter& meter) {
  Tier tier = make_tier(scores, lane, width, set);
  const SeqRec* const seqs = targets.seqs;
  const UTvector<int32_t> order = scan_order(seqs, numbers, tier.shape.lanes);
  const int32_t mark = overflow_mark(lane, width, tier.shape);
  UTvector<int32_t> overflowed;
  LaneFeed feed;
  start_feed(feed, tier.shape, targets, order);
  while (fill_chunk(feed)) {
    tier.call.blocks = feed.blocks;
    tier.call.residues = feed.residues.data;
    tier.call.boundaries = feed.boundaries.data;
    tier.call.begin_masks = feed.begin_masks.data;
    tally.set = run_kernel(set, tier.call);
    for (const LaneEnd& end : feed.ends) {
      const uint8_t* best = tier.best_before.data + static_cast<std::size_t>(end.block) * tier.vector_bytes;
      const int32_t value = lane_value(best, end.lane, width);
      scanned(meter, seqs[end.sequence]);
      if (value >= mark) {
        overflowed.push_back(end.sequence);
        scan_again(meter, seqs[end.sequence]);
      } else {
        out_scores[end.sequence] = (value - tier.shape.zero_score) * lane.unit;
      }
    }
    show_scan_meter(meter);
  }
  tally.sequences[static_cast<int>(width)] += static_cast<int64_t>(order.size() - overflowed.size());
  return overflowed;
}

}  // namespace

ScanTally scan_sequences(const ScanScores& scores, const ScanTargets& targets, int32_t* out_scores,
                         InstructionSet set, LaneWidth first, RunKernel run_kernel, ScanMeter& meter) {
  ScanTally tally;
  const LaneScores lane = make_lane_scores(scores);
  UTvector<int32_t> todo;
  todo.reserve(static_cast<std::size_t>(targets.n));
  for (int32_t k = 0; k < targets.n; ++k) {
    out_scores[k] = -1;
    if (residues(targets.seqs[k]) > 0) todo.push_back(k);
  }
  for (const LaneWidth width : {LaneWidth::BITS8, LaneWidth::BITS16, LaneWidth::BITS32}) {
    if (width < first || todo.empty() || !has_tier(scores, lane, set, width)) continue;
    todo = scan_tier(scores, lane, width, set, run_kernel, targets, todo, out_scores, tally, meter);
    if (width != LaneWidth::BITS32) {
      tally.saturated[static_cast<int>(width)] = static_cast<int64_t>(todo.size());
    }
  }
  return tally;
}

}  // namespace zelvan
