#include "util/failure.h"

#include <cerrno>
#include <cstdarg>
#include <cstring>

#include "util/streams.h"

namespace zelvan {
namespace {

[[noreturn]] void end_run(int status, FILE* stream, const char* format, va_list values) {
  std::vfprintf(stream, format, values);
  UTend_process(status);
}

}  // namespace

void UTerror(const char* message) {
  const int number = errno;
  if (message[0] != '\0') std::fprintf(std_err, "%s: ", message);
  std::fprintf(std_err, "%s\n", std::strerror(number));
}

void error(const char* message, int exit_flag) {
  UTerror(message);
  if (exit_flag != 0) UTend_process(0);
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
  UTend_process(0);
}

}  // namespace zelvan
