// Takes the place of src/seq/size_limit.cpp in test programs.
#include <cstdlib>

#include "seq/size_limit.h"

namespace zelvan {

int64_t most_characters() {
  static const char* const characters = std::getenv("ZELVAN_TEST_CHARACTERS");
  return characters != nullptr ? std::atoll(characters) : INT32_MAX;
}

}  // namespace zelvan
