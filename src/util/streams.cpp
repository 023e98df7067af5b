#include "util/streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace zelvan {

FILE* std_in = stdin;
FILE* std_out = stdout;
FILE* std_err = stderr;

void UTholdstreams() {
  // Lowest first: a new descriptor takes the lowest free number. Each is opened in the wrong direction.
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) == -1) open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

void UTinitfile() {
  std_in = stdin;
  std_out = stdout;
  std_err = stderr;
}

}  // namespace zelvan
