// Takes the place of src/util/failure.cpp in fuzz programs: the ends of a run come back to the target.
#include "util/failure.h"

#include <cstdarg>

#include "harness.h"
#include "util/streams.h"

namespace {

[[noreturn]] void end_run(int status, FILE* stream, const char* format, va_list values) {
  std::vfprintf(stream, format, values);
  throw RunEnd{status};
}

}  // namespace

void UTerror(const char* message) {
  std::fprintf(std_err, "%s\n", message);
}

void error(const char* message, int exit_flag) {
  UTerror(message);
  if (exit_flag != 0) throw RunEnd{0};
}

void UTend_input(FILE* stream, const char* format, ...) {
  va_list values;
  va_start(values, format);
  end_run(-1, stream, format, values);
}

void UTend_stream(FILE* stream, const char* format, ...) {
  va_list values;
  va_start(values, format);
  end_run(1, stream, format, values);
}

void UTend_fault(FILE* stream, const char* format, ...) {
  va_list values;
  va_start(values, format);
  end_run(0, stream, format, values);
}

void UTend_memory(const char* message) {
  UTerror(message);
  throw RunEnd{0};
}
