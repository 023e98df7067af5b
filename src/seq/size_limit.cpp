#include "seq/size_limit.h"

namespace zelvan {

int64_t most_characters() {
  return INT32_MAX;
}

}  // namespace zelvan
