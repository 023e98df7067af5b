// The recurrence of the scan kernels over the lanes of one instruction set, whose vec_<set>.h is included
// first. Everything is local to the kernel object: nothing compiled here may be shared with other objects.
//
// All lanes advance together along their own database sequences. A pass walks down the query with a block of
// database positions ("columns") side by side, so that the state of a query position - the cell of the last
// column and the gap value that it hands on - is loaded and stored once for the whole block. Instead of move
// flags, each cell hands on two finished gap values: its own value less extension or opening, chosen by
// whether it equals the gap value that arrived. Where a lane saturates at 0 this may take a gap for arrived
// that in truth was negative; what it then hands on is at most 0 either way, so no cell changes.
#pragma once

#include "align/scan_kernel.h"

namespace {

template <class V>
constexpr KernelShape SHAPE = kernel_shape(COMPILED_SET, V::WIDTH);
template <class V>
constexpr int VECTOR_BYTES = SHAPE<V>.lanes* SHAPE<V>.lane_bytes;

// The representation of score 0, in every lane.
template <class V>
V zero_score() {
  if constexpr (SHAPE<V>.zero_score == 0) return splat<V>(0);
  return splat<V>(V::WIDTH == LaneWidth::BITS8 ? 0x80808080U : 0x80008000U);
}

// Lanes that saturate have the floor at 0 for nothing.
template <class V>
V diagonal_move(V diagonal, V score) {
  if constexpr (SHAPE<V>.zero_score == 0) return max(add(diagonal, score), zero_score<V>());
  return add(diagonal, score);
}

template <class V, bool AFFINE>
V gap_value(V cell, V arrived, V open, V change) {
  if constexpr (AFFINE) return carry(cell, arrived, open, change);
  return sub(cell, open);
}

template <class V, bool AFFINE, ScoreSource SOURCE, bool RESTART>
void pass(const KernelCall& call, const uint8_t* residues, const uint8_t* mask_of_restart, V& best) {
  constexpr int COLUMNS = SHAPE<V>.columns;
  constexpr int VECTOR = VECTOR_BYTES<V>;
  constexpr bool PREPARED = SOURCE == ScoreSource::PREPARED;
  using Lookup = Codes<V, COLUMNS>;

  const Lookup codes(residues);
  uint8_t* const scratch = call.scratch;
  if constexpr (PREPARED) {
    for (int32_t r = 0; r < call.row_count; ++r) {
      V scores[COLUMNS];
      codes.look_up(call.rows + r * Lookup::ROW_BYTES, scores);
      for (int k = 0; k < COLUMNS; ++k) store(scratch + (r * COLUMNS + k) * VECTOR, scores[k]);
    }
  }

  const int32_t positions = call.positions;
  const int32_t* const row_of = call.row_of;
  const uint8_t* const rows = call.rows;
  const uint32_t* const opens = call.open;
  const uint32_t* const changes = call.change;
  const V zero = zero_score<V>();
  const V restart = RESTART ? load<V>(mask_of_restart) : zero;
  V open = splat<V>(opens[0]);
  V change = AFFINE ? splat<V>(changes[0]) : open;
  V cell[COLUMNS];  // of the previous query position
  V left[COLUMNS];  // gap value handed on from there
  for (int k = 0; k < COLUMNS; ++k) {
    cell[k] = zero;
    left[k] = sub(zero, open);
  }
  V corner = zero;  // the previous query position in the last column of the block before
  V top = best;
  uint8_t* at = call.state;
  for (int32_t i = 0; i < positions; ++i, at += 2 * VECTOR) {
    V scores[COLUMNS];
    if constexpr (PREPARED) {
      const uint8_t* prepared = scratch + row_of[i] * (COLUMNS * VECTOR);
      for (int k = 0; k < COLUMNS; ++k) scores[k] = load<V>(prepared + k * VECTOR);
    } else {
      codes.look_up(rows + row_of[i] * Lookup::ROW_BYTES, scores);
    }
    const V next_open = PREPARED ? open : splat<V>(opens[i + 1]);
    const V next_change = PREPARED || !AFFINE ? change : splat<V>(changes[i + 1]);

    V above = load<V>(at);
    if constexpr (RESTART) above = select(restart, zero, above);
    V up = AFFINE ? load<V>(at + VECTOR) : sub(above, open);
    if constexpr (AFFINE && RESTART) up = select(restart, sub(zero, open), up);
    V diagonal = corner;
    corner = above;
    for (int k = 0; k < COLUMNS; ++k) {
      const V h = max(max(diagonal_move(diagonal, scores[k]), up), left[k]);
      top = max(top, h);
      up = gap_value<V, AFFINE>(h, up, open, change);
      left[k] = gap_value<V, AFFINE>(h, left[k], next_open, next_change);
      diagonal = cell[k];
      cell[k] = h;
    }
    store(at, cell[COLUMNS - 1]);
    if constexpr (AFFINE) store(at + VECTOR, up);
    open = next_open;
    change = next_change;
  }
  if constexpr (V::WIDTH == LaneWidth::BITS32) {
    // No gap value leaves the last query position along the database. Where penalties are not negative that
    // makes no difference; where one is, the score must not grow there.
    store(at - 2 * VECTOR, zero);
    if constexpr (AFFINE) store(at - VECTOR, sub(zero, splat<V>(opens[positions - 1])));
  }
  best = top;
}

template <class V, bool AFFINE, ScoreSource SOURCE>
void run(const KernelCall& call) {
  constexpr int VECTOR = VECTOR_BYTES<V>;
  const uint8_t* residues = call.residues;
  V best = load<V>(call.best);
  for (int32_t b = 0; b < call.blocks; ++b) {
    if (call.turns[b] != 0) {
      const uint8_t* mask = call.masks + b * VECTOR;
      store(call.best_before + b * VECTOR, best);
      best = select(load<V>(mask), zero_score<V>(), best);
      pass<V, AFFINE, SOURCE, true>(call, residues, mask, best);
    } else {
      pass<V, AFFINE, SOURCE, false>(call, residues, nullptr, best);
    }
    residues += SHAPE<V>.columns * SHAPE<V>.lanes;
  }
  store(call.best_before + call.blocks * VECTOR, best);
  store(call.best, best);
}

template <class V>
void run_narrow(const KernelCall& call) {
  if (call.source == ScoreSource::PREPARED) {
    call.affine ? run<V, true, ScoreSource::PREPARED>(call) : run<V, false, ScoreSource::PREPARED>(call);
  } else {
    call.affine ? run<V, true, ScoreSource::DIRECT>(call) : run<V, false, ScoreSource::DIRECT>(call);
  }
}

inline InstructionSet run_kernel(const KernelCall& call) {
  switch (call.width) {
    case LaneWidth::BITS8:
      if constexpr (kernel_shape(COMPILED_SET, LaneWidth::BITS8).lanes > 0) run_narrow<Vec8>(call);
      break;
    case LaneWidth::BITS16:
      run_narrow<Vec16>(call);
      break;
    case LaneWidth::BITS32:
      call.affine ? run<Vec32, true, ScoreSource::DIRECT>(call)
                  : run<Vec32, false, ScoreSource::DIRECT>(call);
      break;
  }
  return COMPILED_SET;
}

}  // namespace
