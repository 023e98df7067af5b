// Numbers of one kind as numbers of another.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace zelvan {

// UTtruncate - a real number without its fraction; the nearest end beyond 32 bits, 0 for what is no number.
inline int32_t UTtruncate(double value) {
  if (std::isnan(value)) return 0;
  constexpr double lowest = std::numeric_limits<int32_t>::min();
  constexpr double highest = std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(std::clamp(value, lowest, highest));
}

}  // namespace zelvan
