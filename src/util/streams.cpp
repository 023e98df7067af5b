#include "util/streams.h"

FILE* std_in = stdin;
FILE* std_out = stdout;
FILE* std_err = stderr;

void UTinitfile() {
  std_in = stdin;
  std_out = stdout;
  std_err = stderr;
}
