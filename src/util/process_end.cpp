#include <cstdlib>

#include "util/failure.h"

namespace zelvan {

void UTend_process(int status) {
  std::exit(status);
}

}  // namespace zelvan
