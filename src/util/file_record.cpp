#include "util/file_record.h"

#include <sys/stat.h>

#include <cerrno>
#include <ctime>

#include "util/failure.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

// fopen opens a directory for reading and only the first read fails, which readers take for an empty file.
FILE* open_regular(const char* name, const char* mode) {
  FILE* stream = std::fopen(name, mode);
  if (stream == nullptr) return nullptr;
  struct stat status;
  if (fstat(fileno(stream), &status) == 0 && S_ISDIR(status.st_mode)) {
    std::fclose(stream);
    errno = EISDIR;
    return nullptr;
  }
  return stream;
}

}  // namespace

FILE* UTfopen(const char* name, const char* mode, int must) {
  FILE* stream = open_regular(name, mode);
  if (stream == nullptr && must == 1) {
    const int reason = errno;
    const UTstring message = UTcat({"Cannot Open File: ", name});
    errno = reason;
    UTerror(message.c_str());
    UTend_stream(std_err, "%s", "");
  }
  return stream;
}

int UTfclose(FILE* stream, int must) {
  const int result = std::fclose(stream);
  if (result != 0 && must == 1) {
    UTerror("Error closing File");
    UTend_stream(std_err, "%s", "");
  }
  return result;
}

FileRec UTfilemake(const char* name, const char* mode, int open_flag) {
  FileRec file;
  file.name = name;
  if (open_flag == 1) file.stream = open_regular(name, mode);
  return file;
}

FileRec& UTfilerename(FileRec& file, const char* name) {
  file.name = name;
  if (file.stream != nullptr) {
    UTfclose(file.stream, 0);
    file.stream = nullptr;
  }
  return file;
}

FileRec& UTfileopen(FileRec& file, const char* mode, int must) {
  file.stream = open_regular(file.name.c_str(), mode);
  if (file.stream == nullptr && must == 1) {
    UTerror("Error opening File");
    UTend_input(std_err, "%s\n", file.name.c_str());
  }
  return file;
}

FileRec& UTfileclose(FileRec& file, int must) {
  const int result = std::fclose(file.stream);
  file.stream = nullptr;
  if (result != 0 && must == 1) {
    UTerror("Error closing File");
    UTend_input(std_err, "%s\n", file.name.c_str());
  }
  return file;
}

void UTfilewritten(const FileRec& file) {
  if (file.stream == nullptr) return;
  if (std::fflush(file.stream) == 0 && std::ferror(file.stream) == 0) return;
  UTerror("Error writing File");
  UTend_stream(std_err, "File: %s is incomplete: check the space on its disk\n", file.name.c_str());
}

const char* UTlocaltime() {
  const std::time_t now = std::time(nullptr);
  return std::asctime(std::localtime(&now));
}

}  // namespace zelvan
