// Numbers of one kind as numbers of another.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace zelvan {

// UTtruncate - a real number without its fraction; beyond 32 bits the nearest limit, 0 for NaN.
inline int32_t UTtruncate(double value) {
  if (std::isnan(value)) return 0;
  constexpr double LOWEST = std::numeric_limits<int32_t>::min();
  constexpr double HIGHEST = std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(std::clamp(value, LOWEST, HIGHEST));
}

}  // namespace zelvan
