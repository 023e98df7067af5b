#include "dna/frame_flags.h"

#include <algorithm>
#include <utility>

#include "align/simd/aligned_block.h"
#include "align/trace/lane_rows.h"
#include "dna/frame_flag_kernel.h"
#include "dna/frame_shift_reference.h"

namespace zelvan {
namespace {

// Columns -2..0 are the zero boundary: column j stands at index j + 3 of the rows kept here.
constexpr int32_t EDGE = 3;
constexpr int32_t CODON = 3;

BestCell sweep_rows(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table,
                    const FramePenalties& penalties, MoveFlags& flags) {
  fit_flags(flags, n, m);
  // Two rows of cells, and what a gap from each of them leaves of its value, upwards and to the left.
  const auto columns = static_cast<std::size_t>(std::max(m, 1) + EDGE);
  UTvector<int32_t> cells[2] = {UTvector<int32_t>(columns, 0), UTvector<int32_t>(columns, 0)};
  UTvector<int32_t> gaps_up(columns, -penalties.open);
  UTvector<int32_t> gaps_left(columns, -penalties.open);
  int32_t* above = cells[0].data() + EDGE;
  int32_t* now = cells[1].data() + EDGE;
  int32_t* const after_up = gaps_up.data() + EDGE;
  int32_t* const after_left = gaps_left.data() + EDGE;
  BestCell best;
  for (int32_t i = 1; i <= n - 2; ++i) {
    const int32_t* s = table[rows[i]];
    const FlagRow row_flags = flags[i];
    for (int32_t j = 1; j <= m - 2; ++j) {
      const int32_t diagonal = above[j - CODON] + s[j];
      const int32_t up = after_up[j];
      const int32_t left = after_left[j - CODON];
      const int32_t shift = now[j - 1] - penalties.shift;
      const int32_t h = std::max(std::max(std::max(diagonal, up), std::max(left, 0)), shift);
      now[j] = h;
      row_flags[j] = static_cast<uint8_t>((h == diagonal ? MOVE_DIAGONAL : 0) | (h == up ? MOVE_UP : 0) |
                                          (h == left ? MOVE_LEFT : 0) | (h == shift ? SHIFT_IN_COLUMNS : 0) |
                                          (h == 0 ? CELL_ZERO : 0));
      after_up[j] = h - (h == up ? penalties.extend : penalties.open);
      after_left[j] = h - (h == left ? penalties.extend : penalties.open);
      if (h > best.score) best = {h, i, j};
    }
    std::swap(above, now);
  }
  return best;
}

void run_frame_flag_kernel(InstructionSet set, const FrameFlagBlock& block) {
  switch (set) {
#if defined(__x86_64__)
    case InstructionSet::AVX512:
    case InstructionSet::AVX512VBMI:
      return run_frame_flag_kernel_avx512(block);
    case InstructionSet::AVX2:
      return run_frame_flag_kernel_avx2(block);
    case InstructionSet::SSE41:
      return run_frame_flag_kernel_sse41(block);
#elif defined(__aarch64__)
    case InstructionSet::NEON:
      return run_frame_flag_kernel_neon(block);
#endif
    default:
      return run_frame_flag_kernel_portable(block);
  }
}

// The sweep in lanes of one width; false where scores, penalties or cells do not fit them.
template <class LANE>
bool sweep_lanes(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table,
                 const FramePenalties& penalties, InstructionSet set, MoveFlags& out_flags,
                 BestCell& out_best) {
  using Range = LaneRange<LANE>;
  if (std::max({penalties.extend, penalties.open, penalties.shift}) > Range::TOP) return false;
  const int32_t positions = m - 2;
  const int32_t lanes = flag_rows(set, Range::WIDTH), stride = flag_stride(Range::WIDTH);
  const int32_t steps = (positions + lanes - 1 + stride - 1) / stride * stride;
  LaneRow<LANE> values(lanes, steps, Range::ZERO), gaps_down(lanes, steps, Range::ZERO);
  ScoreRows<LANE> score_rows(table, positions, lanes, steps);
  fit_flags(out_flags, n, m, lanes, steps);
  const std::size_t vectors = static_cast<std::size_t>(lanes) * sizeof(LANE);
  AlignedBlock best;
  resize_block(best, 2 * vectors);
  const LANE* const row_best = reinterpret_cast<const LANE*>(best.data);
  const LANE* const best_step = reinterpret_cast<const LANE*>(best.data + vectors);
  FrameFlagBlock block = {};
  block.width = Range::WIDTH;
  block.steps = steps;
  block.extend = penalties.extend;
  block.open = penalties.open;
  block.shift = penalties.shift;
  block.values = values.bytes();
  block.gaps_down = gaps_down.bytes();
  block.flags = out_flags.cells.data();
  block.best = best.data;
  block.best_step = best.data + vectors;
  out_best = {0, 1, 1};
  for (int32_t first = 1; first <= n - 2; first += lanes) {
    for (int32_t r = 0; r < lanes; ++r) {
      block.scores[r] = first + r <= n - 2 ? score_rows.of(rows[first + r]) : score_rows.none();
    }
    if (!score_rows.fit) return false;
    run_frame_flag_kernel(set, block);
    for (int32_t r = 0; r < lanes && first + r <= n - 2; ++r) {
      if (Range::ZERO < 0 && row_best[r] == Range::TOP) return false;
      const int32_t score = row_best[r] - Range::ZERO;
      if (score > out_best.score) out_best = {score, first + r, best_step[r] - r};
    }
    block.flags += static_cast<std::size_t>(steps) * static_cast<std::size_t>(lanes);
  }
  return true;
}

}  // namespace

BestCell fill_frame_flags(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table,
                          const FramePenalties& penalties, InstructionSet set, MoveFlags& out_flags) {
  if (m <= 2 || n <= 2) return {};
  if (set == InstructionSet::REFERENCE || std::min({penalties.extend, penalties.open, penalties.shift}) < 0) {
    return sweep_rows(m, rows, n, table, penalties, out_flags);
  }
  BestCell best;
  if (!has_flag_lanes(set, LaneWidth::BITS16) ||
      !sweep_lanes<int16_t>(m, rows, n, table, penalties, set, out_flags, best)) {
    sweep_lanes<int32_t>(m, rows, n, table, penalties, set, out_flags, best);
  }
  return best;
}

}  // namespace zelvan
