#include "driver/config_file.h"

#include <cerrno>

#include "util/failure.h"
#include "util/line_reader.h"
#include "util/streams.h"
#include "util/text_start.h"

namespace zelvan {

bool open_config(ConfigFile& out_file, const char* path, const char* reader, const Params* p) {
  out_file.path = path;
  out_file.text = UTlinebuffer(static_cast<std::size_t>(p->LINE_BUFFER_LEN), reader);
  out_file.line_number = 0;
  out_file.stream = UTfopen(path, "r", 0);
  return out_file.stream != nullptr;
}

bool next_line(ConfigFile& file) {
  if (!UTgetline(file.stream, file.text)) return false;
  if (++file.line_number == 1) UTskip_mark(file.text);
  return true;
}

bool close_config(ConfigFile& file) {
  const bool read_whole = std::ferror(file.stream) == 0;
  if (!read_whole) report_config(file, "Error reading configuration file");
  UTfclose(file.stream, 1);
  file.stream = nullptr;
  return read_whole;
}

void report_config(const ConfigFile& file, const char* message) {
  UTerror(message);
  if (file.line_number == 0) {
    std::fprintf(std_err, "File: %s\n", file.path);
  } else {
    std::fprintf(std_err, "File: %s  Line: %d\n", file.path, file.line_number);
  }
}

void report_malformed(const ConfigFile& file, const char* message) {
  errno = EINVAL;
  report_config(file, message);
}

}  // namespace zelvan
