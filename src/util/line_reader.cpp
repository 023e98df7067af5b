#include "util/line_reader.h"

#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {

UTvector<char> UTlinebuffer(std::size_t size, const char* caller) {
  // A missing line buffer has its own message and status, unlike other exhausted memory.
  if (!UThaveroom(size)) {
    char message[128];
    std::snprintf(message, sizeof message, "No Space for buff in %s", caller);
    UTerror(message);
    UTend_input(std_err, "%s", "");
  }
  return UTvector<char>(size);
}

bool UTgetline(FILE* stream, UTvector<char>& buffer) {
  std::size_t length = 0;
  while (length + 1 < buffer.size()) {
    int byte = std::getc(stream);
    if (byte == EOF) break;
    if (byte == '\r') {
      const int next = std::getc(stream);
      if (next == '\n' || next == EOF) {
        byte = '\n';
      } else {
        std::ungetc(next, stream);
      }
    }
    buffer[length++] = byte == '\0' ? ZERO_BYTE_STAND_IN : static_cast<char>(byte);
    if (byte == '\n') break;
  }
  buffer[length] = '\0';
  return length > 0;
}

}  // namespace zelvan
