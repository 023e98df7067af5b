#include <unistd.h>

#include <cstdlib>

#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {

void UTend_process(int status) {
  UTcut_streams();
  std::exit(status);
}

void UTend_at_once(int status) {
  _exit(status);
}

}  // namespace zelvan
