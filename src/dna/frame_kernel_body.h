// The recurrences of protein against DNA translated in three interleaved frames: a step of 3 along the DNA
// stays in the frame, a step of 1 shifts it. No penalty may be negative here. Included by kernel objects
// after their lanes.
#pragma once

#include "align/scan/kernel_lanes.h"
#include "dna/frame_kernel.h"

namespace zelvan {
namespace {

constexpr int FRAMES = 3;

// nswli: the database is translated. Blocks are whole codons, so that column k follows column k - 3 of the
// same block, or the column of the same frame in the block before.
template <class V, ScoreSource SOURCE>
struct TranslatedTargetScan {
  using Lanes = V;
  static constexpr int COLUMNS = kernel_shape(COMPILED_SET, V::WIDTH, TRANSLATED_TARGET_RECURRENCE).columns;
  static_assert(COLUMNS % FRAMES == 0);

  // State of a query position: the cells of the last three columns, then the gap values that they hand on.
  template <bool BOUNDARY>
  static void pass(const KernelCall& call, const uint8_t* residues, typename V::Mask begins, V& best) {
    const BlockScores<V, COLUMNS, SOURCE> block(call, residues);
    const int32_t positions = call.positions;
    const V zero = zero_cells<V>();
    const Gaps<V> gaps = gaps_at<V, true>(call, 0);
    const V shift = splat<V>(call.shift);
    // Arrays begin with the last three columns of the block before: column k stands at k + FRAMES.
    V previous[COLUMNS + FRAMES];  // cells of the previous query position
    V left[COLUMNS];               // gap values handed on from there
    for (V& cell : previous) cell = zero;
    for (V& gap : left) gap = sub(zero, gaps.open);
    V top = best;
    uint8_t* state = call.state;
    for (int32_t i = 0; i < positions; ++i, state += 2 * FRAMES * VECTOR_BYTES) {
      V scores[COLUMNS];
      block.at(i, scores);
      V cell[COLUMNS + FRAMES];
      V up[COLUMNS + FRAMES];
      for (int f = 0; f < FRAMES; ++f) {
        cell[f] = load<V>(state + f * VECTOR_BYTES);
        up[f] = load<V>(state + (FRAMES + f) * VECTOR_BYTES);
        if constexpr (BOUNDARY) {
          cell[f] = select(begins, zero, cell[f]);
          up[f] = select(begins, sub(zero, gaps.open), up[f]);
        }
      }
      for (int k = 0; k < COLUMNS; ++k) {
        const V in_frame = max(max(diagonal_move(previous[k], scores[k]), up[k]), left[k]);
        const V h = max(in_frame, sub(cell[k + FRAMES - 1], shift));
        top = max(top, h);
        cell[k + FRAMES] = h;
        up[k + FRAMES] = gap_value<V, true>(h, up[k], gaps);
        left[k] = gap_value<V, true>(h, left[k], gaps);
      }
      for (int f = 0; f < FRAMES; ++f) {
        store(state + f * VECTOR_BYTES, cell[COLUMNS + f]);
        store(state + (FRAMES + f) * VECTOR_BYTES, up[COLUMNS + f]);
      }
      for (int k = 0; k < COLUMNS + FRAMES; ++k) previous[k] = cell[k];
    }
    best = top;
  }
};

// npswl, npswli2: the query is translated. What a column needs of the last three query positions is kept in
// rings of three, so that the position written always takes the place of the one a codon before.
template <class V, bool AFFINE, ScoreSource SOURCE>
struct TranslatedQueryScan {
  using Lanes = V;
  static constexpr int COLUMNS = kernel_shape(COMPILED_SET, V::WIDTH, TRANSLATED_QUERY_RECURRENCE).columns;

  struct Rings {
    V cell[COLUMNS + 1][FRAMES];  // of the last column of the block before, then of each column
    V left[COLUMNS][FRAMES];      // gap values handed on
  };

  // State of a query position: the cell of the last column; where affine, the gap value that it hands on.
  template <bool BOUNDARY>
  static void pass(const KernelCall& call, const uint8_t* residues, typename V::Mask begins, V& best) {
    const BlockScores<V, COLUMNS, SOURCE> block(call, residues);
    const V zero = zero_cells<V>();
    const Gaps<V> gaps = gaps_at<V, AFFINE>(call, 0);
    const V shift = splat<V>(call.shift);
    Rings rings;
    for (int f = 0; f < FRAMES; ++f) {
      for (V(&cell)[FRAMES] : rings.cell) cell[f] = zero;
      for (V(&left)[FRAMES] : rings.left) left[f] = sub(zero, gaps.open);
    }
    V top = best;
    const auto step = [&]<int FRAME>(int32_t i) {
      constexpr int ONE_BACK = (FRAME + FRAMES - 1) % FRAMES;
      uint8_t* state = call.state + static_cast<int64_t>(i) * 2 * VECTOR_BYTES;
      V scores[COLUMNS];
      block.at(i, scores);
      V above = load<V>(state);
      if constexpr (BOUNDARY) above = select(begins, zero, above);
      V up = AFFINE ? load<V>(state + VECTOR_BYTES) : sub(above, gaps.open);
      if constexpr (AFFINE && BOUNDARY) up = select(begins, sub(zero, gaps.open), up);
      V diagonal = rings.cell[0][FRAME];
      rings.cell[0][FRAME] = above;
      for (int k = 0; k < COLUMNS; ++k) {
        V& left = rings.left[k][FRAME];
        V& cell = rings.cell[k + 1][FRAME];
        const V in_frame = max(max(diagonal_move(diagonal, scores[k]), up), left);
        const V h = max(in_frame, sub(rings.cell[k + 1][ONE_BACK], shift));
        top = max(top, h);
        up = gap_value<V, AFFINE>(h, up, gaps);
        left = gap_value<V, AFFINE>(h, left, gaps);
        diagonal = cell;
        cell = h;
      }
      store(state, rings.cell[COLUMNS][FRAME]);
      if constexpr (AFFINE) store(state + VECTOR_BYTES, up);
    };
    int32_t i = 0;
    for (; i + FRAMES <= call.positions; i += FRAMES) {
      step.template operator()<0>(i);
      step.template operator()<1>(i + 1);
      step.template operator()<2>(i + 2);
    }
    if (i < call.positions) step.template operator()<0>(i);
    if (i + 1 < call.positions) step.template operator()<1>(i + 1);
    best = top;
  }
};

template <class V, ScoreSource SOURCE>
void scan_frames(Translated side, const KernelCall& call) {
  if (side == Translated::TARGET) {
    run<TranslatedTargetScan<V, SOURCE>>(call);
  } else {
    call.affine ? run<TranslatedQueryScan<V, true, SOURCE>>(call)
                : run<TranslatedQueryScan<V, false, SOURCE>>(call);
  }
}

inline InstructionSet run_frame_kernel(Translated side, const KernelCall& call) {
  switch (call.width) {
    case LaneWidth::BITS8:
      if constexpr (COMPILED_SET != InstructionSet::PORTABLE) {
        scan_frames<Vec8, ScoreSource::PREPARED>(side, call);
      }
      break;
    case LaneWidth::BITS16:
      scan_frames<Vec16, ScoreSource::PREPARED>(side, call);
      break;
    case LaneWidth::BITS32:
      scan_frames<Vec32, ScoreSource::DIRECT>(side, call);
      break;
  }
  return COMPILED_SET;
}

}  // namespace
}  // namespace zelvan
