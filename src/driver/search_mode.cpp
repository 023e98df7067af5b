#include "driver/search_mode.h"

namespace zelvan {

SearchMode decode_mode(int32_t mode) {
  constexpr bool LINEAR = false, AFFINE = true;
  switch (mode) {
    case 0:
    case LINEAR_MODE:
      return {Comparison::PROTEINS, LINEAR};
    case 2:
    case AFFINE_MODE:
      return {Comparison::PROTEINS, AFFINE};
    case 210:
      return {Comparison::PROTEINS, LINEAR, true};
    case 212:
      return {Comparison::PROTEINS, AFFINE, true};
    case 10:
    case 12:
      return {Comparison::TRANSLATED_TARGETS, AFFINE};
    case 20:
      return {Comparison::TRANSLATED_QUERY, LINEAR};
    case 22:
      return {Comparison::TRANSLATED_QUERY, AFFINE};
    case 29:  // accepted, and does nothing yet
      return {Comparison::NONE, LINEAR, false, true};
    default:
      return {};
  }
}

bool reads_text_only(int32_t mode) {
  return mode == 10 || mode == 99 || mode == 667;
}

}  // namespace zelvan
