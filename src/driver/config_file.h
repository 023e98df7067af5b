// Line-wise reading of a configuration file: what the defaults, alias and gap-defaults files share.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"

namespace zelvan {

struct ConfigFile {
  const char* path = "";    // not owned
  FILE* stream = nullptr;   // owned while open
  UTvector<char> text;      // the current line, its newline included, zero-terminated
  int32_t line_number = 0;  // of `text`, from 1; a piece of an overlong line counts as a line
};

// open_config - opens a file to be read through a buffer of p->LINE_BUFFER_LEN bytes.
// In     reader: the routine that reads, named when there is no room for the buffer (status -1)
// Returns false, nothing reported and errno set, when the file cannot be opened
bool open_config(ConfigFile& out_file, const char* path, const char* reader, const Params* p);

// next_line - reads the next line into `text`; false at the end of the file or when reading fails.
bool next_line(ConfigFile& file);

// close_config - closes the file.
// Returns false, reported, when reading had failed before the end of the file
bool close_config(ConfigFile& file);

// report_config - writes a message with the system's description of the current error to std_err, then the
// file's name and the line reached.
void report_config(const ConfigFile& file, const char* message);

// report_malformed - the same for a line that is not as it should be.
void report_malformed(const ConfigFile& file, const char* message);

}  // namespace zelvan
