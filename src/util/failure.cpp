#include "util/failure.h"

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "util/streams.h"

void UTerror(const char* message) {
  const int number = errno;
  if (message[0] != '\0') std::fprintf(std_err, "%s: ", message);
  std::fprintf(std_err, "%s\n", std::strerror(number));
}

void error(const char* message, int exit_flag) {
  UTerror(message);
  if (exit_flag != 0) std::exit(0);
}

void UTend_input(FILE* stream, const char* format, ...) {
  va_list values;
  va_start(values, format);
  std::vfprintf(stream, format, values);
  va_end(values);
  std::exit(-1);
}

void UTend_stream(FILE* stream, const char* format, ...) {
  va_list values;
  va_start(values, format);
  std::vfprintf(stream, format, values);
  va_end(values);
  std::exit(1);
}

void UTend_memory(const char* message) {
  UTerror(message);
  std::exit(0);
}
