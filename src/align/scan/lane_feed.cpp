#include "align/scan/lane_feed.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <initializer_list>

namespace zelvan {
namespace {

std::size_t chunk_columns(const KernelShape& shape) {
  return static_cast<std::size_t>(CHUNK_BLOCKS * shape.columns);
}

// Exchanges the off-diagonal parts of a pair of rows: in each group of `bytes` * 2, the upper bytes of `a`
// with the lower ones of `b`.
void exchange(uint64_t& a, uint64_t& b, int bytes, uint64_t lower) {
  const uint64_t changed = ((a >> (8 * bytes)) ^ b) & lower;
  b ^= changed;
  a ^= changed << (8 * bytes);
}

// Transposes 8 rows of 8 bytes by exchanging ever smaller blocks.
void transpose_8x8(const uint8_t* from, std::size_t from_stride, uint8_t* to, std::size_t to_stride) {
  if constexpr (std::endian::native != std::endian::little) {
    for (std::size_t r = 0; r < 8; ++r) {
      for (std::size_t c = 0; c < 8; ++c) to[c * to_stride + r] = from[r * from_stride + c];
    }
    return;
  }
  uint64_t row[8];
  for (std::size_t r = 0; r < 8; ++r) std::memcpy(&row[r], from + r * from_stride, 8);
  for (const int r : {0, 1, 2, 3}) exchange(row[r], row[r + 4], 4, 0x00000000FFFFFFFFU);
  for (const int r : {0, 1, 4, 5}) exchange(row[r], row[r + 2], 2, 0x0000FFFF0000FFFFU);
  for (const int r : {0, 2, 4, 6}) exchange(row[r], row[r + 1], 1, 0x00FF00FF00FF00FFU);
  for (std::size_t r = 0; r < 8; ++r) std::memcpy(to + r * to_stride, &row[r], 8);
}

// From one row per lane to one row per column.
void transpose_chunk(LaneFeed& feed) {
  const std::size_t columns = chunk_columns(feed.shape);
  const auto lanes = static_cast<std::size_t>(feed.shape.lanes);
  std::size_t lane = 0;
  for (; lane + 8 <= lanes; lane += 8) {
    for (std::size_t c = 0; c < columns; c += 8) {
      transpose_8x8(feed.by_lane.data + lane * columns + c, columns, feed.residues.data + c * lanes + lane,
                    lanes);
    }
  }
  for (; lane < lanes; ++lane) {
    for (std::size_t c = 0; c < columns; ++c) {
      feed.residues.data[c * lanes + lane] = feed.by_lane.data[lane * columns + c];
    }
  }
}

bool begin_sequence(LaneFeed& feed, int32_t lane_number, int32_t block) {
  if (feed.next == feed.order->size()) return false;
  LaneFeed::Lane& lane = feed.lanes[static_cast<std::size_t>(lane_number)];
  lane.sequence = (*feed.order)[feed.next++];
  const SeqRec& record = feed.targets.seqs[lane.sequence];
  lane.at = codes_of(feed.targets, record, lane.room) + 1;
  lane.left = residues(record);
  feed.boundaries.data[block] = 1;
  const int32_t bytes = feed.shape.lane_bytes;
  std::memset(feed.begin_masks.data + (block * feed.shape.lanes + lane_number) * bytes, 0xFF,
              static_cast<std::size_t>(bytes));
  return true;
}

// So many lanes read side by side that the processor does not see what they will read next.
void fetch_ahead(const int8_t* at, int32_t bytes) {
  constexpr int32_t CACHE_LINE = 64;
  for (int32_t k = 0; k < bytes; k += CACHE_LINE) __builtin_prefetch(at + k);
  if (bytes > 0) __builtin_prefetch(at + bytes - 1);
}

// Returns the column behind the lane's last residue of this chunk, rounded up to a block.
int32_t fill_lane(LaneFeed& feed, int32_t number) {
  const int32_t columns = feed.shape.columns;
  const int32_t end = CHUNK_BLOCKS * columns;
  uint8_t* const row = feed.by_lane.data + number * end;
  LaneFeed::Lane& lane = feed.lanes[static_cast<std::size_t>(number)];
  int32_t column = 0;
  while (column < end) {
    if (lane.left == 0 && !begin_sequence(feed, number, column / columns)) break;
    const int32_t run = std::min(lane.left, end - column);
    std::memcpy(row + column, lane.at, static_cast<std::size_t>(run));
    lane.at += run;
    lane.left -= run;
    column += run;
    if (lane.left == 0) {
      const int32_t block = (column + columns - 1) / columns;
      std::fill(row + column, row + block * columns, PAD_CODE);
      column = block * columns;
      if (block < CHUNK_BLOCKS) feed.boundaries.data[block] = 1;
      feed.ends.push_back({block, number, lane.sequence});
    }
  }
  std::fill(row + column, row + end, PAD_CODE);
  fetch_ahead(lane.at, std::min(lane.left, end));
  return column;
}

}  // namespace

UTvector<int32_t> scan_order(const SeqRec* seqs, const UTvector<int32_t>& numbers, int32_t lanes) {
  // A lane's share is total / lanes columns; an idle end of one hundredth of it is not worth sorting for.
  constexpr int64_t HUNDREDTHS = 100;
  int64_t total = 0;
  for (const int32_t k : numbers) total += std::max(residues(seqs[k]), 0);
  const int64_t is_long = total / (static_cast<int64_t>(lanes) * HUNDREDTHS);
  UTvector<int32_t> order;
  order.reserve(numbers.size());
  for (const int32_t k : numbers) {
    if (residues(seqs[k]) > 0) order.push_back(k);
  }
  const auto others = std::stable_partition(order.begin(), order.end(),
                                            [&](int32_t k) { return residues(seqs[k]) > is_long; });
  std::stable_sort(order.begin(), others, [&](int32_t a, int32_t b) { return seqs[a].len > seqs[b].len; });
  return order;
}

void start_feed(LaneFeed& feed, const KernelShape& shape, const ScanTargets& targets,
                const UTvector<int32_t>& order) {
  feed.shape = shape;
  feed.targets = targets;
  feed.order = &order;
  feed.next = 0;
  feed.lanes.assign(static_cast<std::size_t>(shape.lanes), LaneFeed::Lane());
  const auto lanes = static_cast<std::size_t>(shape.lanes);
  resize_block(feed.by_lane, chunk_columns(shape) * lanes);
  resize_block(feed.residues, chunk_columns(shape) * lanes);
  resize_block(feed.boundaries, CHUNK_BLOCKS);
  resize_block(feed.begin_masks, CHUNK_BLOCKS * lanes * static_cast<std::size_t>(shape.lane_bytes));
}

bool fill_chunk(LaneFeed& feed) {
  const std::size_t vector = static_cast<std::size_t>(feed.shape.lanes * feed.shape.lane_bytes);
  for (std::size_t b = 0; b < CHUNK_BLOCKS; ++b) {
    if (feed.boundaries.data[b] != 0) std::memset(feed.begin_masks.data + b * vector, 0, vector);
    feed.boundaries.data[b] = 0;
  }
  feed.ends.clear();
  int32_t used = 0;
  for (int32_t lane = 0; lane < feed.shape.lanes; ++lane) used = std::max(used, fill_lane(feed, lane));
  transpose_chunk(feed);
  feed.blocks = used / feed.shape.columns;
  return used > 0;
}

}  // namespace zelvan
