// The recurrence of protein against protein: swl, swli, swlv, swliv.
#pragma once

#include "align/scan/kernel_lanes.h"

namespace zelvan {
namespace {

template <class V, bool AFFINE, ScoreSource SOURCE>
struct LocalScan {
  using Lanes = V;
  static constexpr int COLUMNS = SHAPE<V, Recurrence::LOCAL>.columns;

  // State of a query position: the cell of the last column; where affine, the gap value that it hands on.
  template <bool RESTART>
  static void pass(const KernelCall& call, const uint8_t* residues, V begins, V& best) {
    constexpr int VECTOR = VECTOR_BYTES<V>;
    constexpr bool STEADY_GAPS = SOURCE == ScoreSource::PREPARED;
    const BlockScores<V, COLUMNS, SOURCE> block(call, residues);
    const int32_t positions = call.positions;
    const V zero = zero_score<V>();
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
    for (int32_t i = 0; i < positions; ++i, state += 2 * VECTOR) {
      V scores[COLUMNS];
      block.at(i, scores);
      // A gap value is charged by the query position at which it arrives.
      const Gaps<V> next_gaps = STEADY_GAPS ? gaps : gaps_at<V, AFFINE>(call, i + 1);
      V above = load<V>(state);
      if constexpr (RESTART) above = select(begins, zero, above);
      V up = AFFINE ? load<V>(state + VECTOR) : sub(above, gaps.open);
      if constexpr (AFFINE && RESTART) up = select(begins, sub(zero, gaps.open), up);
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
      if constexpr (AFFINE) store(state + VECTOR, up);
      gaps = next_gaps;
    }
    if constexpr (V::WIDTH == LaneWidth::BITS32) {
      // No gap value leaves the last query position along the database. Where penalties are not negative that
      // makes no difference; where one is, the score must not grow there.
      store(state - 2 * VECTOR, zero);
      if constexpr (AFFINE) store(state - VECTOR, sub(zero, splat<V>(call.open[positions - 1])));
    }
    best = top;
  }
};

}  // namespace
}  // namespace zelvan
