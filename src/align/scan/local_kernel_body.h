// The recurrence of protein against protein: swl, swli, swlv, swliv. Included by kernel objects behind
// their lanes.
#pragma once

#include "align/scan/kernel_lanes.h"
#include "align/scan/local_kernel.h"

namespace zelvan {
namespace {

template <class V, bool AFFINE, ScoreSource SOURCE>
struct LocalScan {
  using Lanes = V;
  static constexpr int COLUMNS = kernel_shape(COMPILED_SET, V::WIDTH, LOCAL_RECURRENCE).columns;

  // State of a query position: the cell of the last column; where affine, the gap value that it hands on.
  template <bool BOUNDARY>
  static void pass(const KernelCall& call, const uint8_t* residues, typename V::Mask begins, V& best) {
    constexpr bool STEADY_GAPS = SOURCE != ScoreSource::BY_POSITION;
    const BlockScores<V, COLUMNS, SOURCE> block(call, residues);
    const int32_t positions = call.positions;
    const V zero = zero_cells<V>();
    Gaps<V> gaps = gaps_at<V, AFFINE>(call, 0);
    V cell[COLUMNS];  // of the previous query position
    V left[COLUMNS];  // gap value handed on from there
    for (int k = 0; k < COLUMNS; ++k) {
      cell[k] = zero;
      left[k] = sub(zero, gaps.open);
    }
    V corner = zero;  // the previous query position in the last column of the block before
    V top = best;
    uint8_t* state = call.state;
    for (int32_t i = 0; i < positions; ++i, state += 2 * VECTOR_BYTES) {
      V scores[COLUMNS];
      block.at(i, scores);
      // A gap value is charged by the query position at which it arrives.
      const Gaps<V> next_gaps = STEADY_GAPS ? gaps : gaps_at<V, AFFINE>(call, i + 1);
      V above = load<V>(state);
      if constexpr (BOUNDARY) above = select(begins, zero, above);
      V up = AFFINE ? load<V>(state + VECTOR_BYTES) : sub(above, gaps.open);
      if constexpr (AFFINE && BOUNDARY) up = select(begins, sub(zero, gaps.open), up);
      V diagonal = corner;
      corner = above;
      for (int k = 0; k < COLUMNS; ++k) {
        const V h = max(max(diagonal_move(diagonal, scores[k]), up), left[k]);
        top = max(top, h);
        up = gap_value<V, AFFINE>(h, up, gaps);
        left[k] = gap_value<V, AFFINE>(h, left[k], next_gaps);
        diagonal = cell[k];
        cell[k] = h;
      }
      store(state, cell[COLUMNS - 1]);
      if constexpr (AFFINE) store(state + VECTOR_BYTES, up);
      gaps = next_gaps;
    }
    if constexpr (V::WIDTH == LaneWidth::BITS32) {
      // No gap value leaves the last query position along the database. Where penalties are not negative that
      // makes no difference; where one is, the score must not grow there.
      store(state - 2 * VECTOR_BYTES, zero);
      if constexpr (AFFINE) store(state - VECTOR_BYTES, sub(zero, splat<V>(call.open[positions - 1])));
    }
    best = top;
  }
};

template <class V, ScoreSource SOURCE>
void scan_local(const KernelCall& call) {
  call.affine ? run<LocalScan<V, true, SOURCE>>(call) : run<LocalScan<V, false, SOURCE>>(call);
}

template <class V>
void scan_local_narrow(const KernelCall& call) {
  switch (call.source) {
    case ScoreSource::PREPARED:
      return scan_local<V, ScoreSource::PREPARED>(call);
    case ScoreSource::DIRECT:
      return scan_local<V, ScoreSource::DIRECT>(call);
    case ScoreSource::BY_POSITION:
      return scan_local<V, ScoreSource::BY_POSITION>(call);
  }
}

inline InstructionSet run_local_kernel(const KernelCall& call) {
  switch (call.width) {
    case LaneWidth::BITS8:
      if constexpr (COMPILED_SET != InstructionSet::PORTABLE) scan_local_narrow<Vec8>(call);
      break;
    case LaneWidth::BITS16:
      scan_local_narrow<Vec16>(call);
      break;
    case LaneWidth::BITS32:
      scan_local<Vec32, ScoreSource::BY_POSITION>(call);
      break;
  }
  return COMPILED_SET;
}

}  // namespace
}  // namespace zelvan
