// What is kept of a cell beside its value. Plain data, because kernel objects include it (see flag_kernel.h).
#pragma once

#include <cstdint>

namespace zelvan {

// Set for every move whose value equals the cell's.
enum MoveFlag : uint8_t {
  MOVE_DIAGONAL = 1,
  MOVE_UP = 2,    // from the previous target position: target residue opposite a gap
  MOVE_LEFT = 4,  // from the previous query position: query residue opposite a gap
};
constexpr uint8_t ALL_MOVES = MOVE_DIAGONAL | MOVE_UP | MOVE_LEFT;

// Set where the value is 0. No path goes on there: what moves such a cell has means nothing.
constexpr uint8_t CELL_ZERO = 8;

// Set where the value is at least the threshold of the paths asked for.
constexpr uint8_t CELL_HIGH = 16;

}  // namespace zelvan
