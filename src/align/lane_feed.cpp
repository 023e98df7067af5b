#include "align/lane_feed.h"

#include <algorithm>
#include <cstring>

namespace {

// Puts residues of the lane's sequence into the columns of the chunk from `column` on; returns the column
// behind them.
int32_t copy_run(LaneFeed& feed, int32_t lane_number, int32_t column, int32_t end) {
  LaneFeed::Lane& lane = feed.lanes[static_cast<std::size_t>(lane_number)];
  const int32_t run = std::min(lane.left, end - column);
  uint8_t* to = feed.residues.data + column * feed.shape.lanes + lane_number;
  for (int32_t k = 0; k < run; ++k) {
    *to = static_cast<uint8_t>(lane.at[k]);
    to += feed.shape.lanes;
  }
  lane.at += run;
  lane.left -= run;
  return column + run;
}

int32_t copy_pads(LaneFeed& feed, int32_t lane_number, int32_t column, int32_t end) {
  for (; column < end; ++column) feed.residues.data[column * feed.shape.lanes + lane_number] = PAD_CODE;
  return column;
}

bool begin_sequence(LaneFeed& feed, int32_t lane_number, int32_t block) {
  if (feed.next == feed.order->size()) return false;
  LaneFeed::Lane& lane = feed.lanes[static_cast<std::size_t>(lane_number)];
  lane.sequence = (*feed.order)[feed.next++];
  const SeqRec& record = feed.seqs[lane.sequence];
  lane.at = record.seq + 1;
  lane.left = record.len - 2;
  feed.turns.data[block] = 1;
  const int32_t bytes = feed.shape.lane_bytes;
  std::memset(feed.masks.data + (block * feed.shape.lanes + lane_number) * bytes, 0xFF,
              static_cast<std::size_t>(bytes));
  return true;
}

// Returns the column behind the lane's last residue of this chunk, rounded up to a block.
int32_t fill_lane(LaneFeed& feed, int32_t number) {
  const int32_t columns = feed.shape.columns;
  const int32_t end = CHUNK_BLOCKS * columns;
  int32_t column = 0;
  while (column < end) {
    LaneFeed::Lane& lane = feed.lanes[static_cast<std::size_t>(number)];
    if (lane.left == 0 && !begin_sequence(feed, number, column / columns)) break;
    column = copy_run(feed, number, column, end);
    if (lane.left == 0) {
      const int32_t block = (column + columns - 1) / columns;
      column = copy_pads(feed, number, column, block * columns);
      if (block < CHUNK_BLOCKS) feed.turns.data[block] = 1;
      feed.ends.push_back({block, number, lane.sequence});
    }
  }
  copy_pads(feed, number, column, end);
  return column;
}

}  // namespace

UTvector<int32_t> scan_order(const SeqRec* seqs, const UTvector<int32_t>& numbers, int32_t lanes) {
  // A lane's share is total / lanes columns; an idle end of one hundredth of it is not worth sorting for.
  constexpr int64_t HUNDREDTHS = 100;
  int64_t total = 0;
  for (const int32_t k : numbers) total += std::max(seqs[k].len - 2, 0);
  const int64_t is_long = total / (static_cast<int64_t>(lanes) * HUNDREDTHS);
  UTvector<int32_t> order;
  order.reserve(numbers.size());
  for (const int32_t k : numbers) {
    if (seqs[k].len > 2) order.push_back(k);
  }
  const auto others =
      std::stable_partition(order.begin(), order.end(), [&](int32_t k) { return seqs[k].len - 2 > is_long; });
  std::stable_sort(order.begin(), others, [&](int32_t a, int32_t b) { return seqs[a].len > seqs[b].len; });
  return order;
}

void start_feed(LaneFeed& feed, const KernelShape& shape, const SeqRec* seqs,
                const UTvector<int32_t>& order) {
  feed.shape = shape;
  feed.seqs = seqs;
  feed.order = &order;
  feed.next = 0;
  feed.lanes.assign(static_cast<std::size_t>(shape.lanes), LaneFeed::Lane());
  const auto lanes = static_cast<std::size_t>(shape.lanes);
  resize_block(feed.residues, static_cast<std::size_t>(CHUNK_BLOCKS * shape.columns) * lanes);
  resize_block(feed.turns, CHUNK_BLOCKS);
  resize_block(feed.masks, CHUNK_BLOCKS * lanes * static_cast<std::size_t>(shape.lane_bytes));
}

bool fill_chunk(LaneFeed& feed) {
  const std::size_t vector = static_cast<std::size_t>(feed.shape.lanes * feed.shape.lane_bytes);
  for (std::size_t b = 0; b < CHUNK_BLOCKS; ++b) {
    if (feed.turns.data[b] != 0) std::memset(feed.masks.data + b * vector, 0, vector);
    feed.turns.data[b] = 0;
  }
  feed.ends.clear();
  int32_t used = 0;
  for (int32_t lane = 0; lane < feed.shape.lanes; ++lane) used = std::max(used, fill_lane(feed, lane));
  feed.blocks = used / feed.shape.columns;
  return used > 0;
}
