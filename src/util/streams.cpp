#include "util/streams.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <initializer_list>

#include "util/failure.h"

namespace zelvan {

FILE* std_in = stdin;
FILE* std_out = stdout;
FILE* std_err = stderr;

namespace {

UTvector<FileRec> opened;
UTvector<FILE*> full;  // those of them whose files still hold what they held before

// Cuts a file behind what this run has written to it.
void cut(FILE* stream, bool also_unwritten) {
  std::fflush(stream);
  const off_t written = ftello(stream);
  if (written < 0 || (written == 0 && !also_unwritten)) return;
  if (ftruncate(fileno(stream), written) != 0) UTerror("Error emptying File");
}

void cut_all(bool also_unwritten) {
  for (FILE* stream : full) cut(stream, also_unwritten);
  full.clear();
}

}  // namespace

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

FILE* UTopen_stream(const char* name) {
  FileRec file = UTfilemake(name, "w", 0);
  struct stat status;
  if (stat(name, &status) == 0 && S_ISREG(status.st_mode)) {
    const int descriptor = open(name, O_WRONLY);
    if (descriptor != -1) file.stream = fdopen(descriptor, "w");
    if (file.stream != nullptr) full.push_back(file.stream);
  }
  if (file.stream == nullptr) file.stream = UTfopen(name, "w", 1);
  opened.push_back(file);
  return file.stream;
}

const UTvector<FileRec>& UTopened_streams() {
  return opened;
}

void UTempty_streams() {
  cut_all(true);
}

void UTcut_streams() {
  cut_all(false);
}

void UTdivert_streams() {
  for (const FileRec& file : opened) {
    dup2(STDERR_FILENO, fileno(file.stream));
    std::fflush(file.stream);
  }
  full.clear();
}

}  // namespace zelvan
