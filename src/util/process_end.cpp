#include <cstdlib>

#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {

void UTend_process(int status) {
  UTcut_streams();
  std::exit(status);
}

}  // namespace zelvan
