// Files: checked opening and closing of streams, and the named file record of the configuration.
#pragma once

#include <cstdint>
#include <cstdio>

#include "util/memory.h"

namespace zelvan {

// A file name and its open stream (null when not open). The open mode is passed to each open call.
struct FileRec {
  UTstring name;
  FILE* stream = nullptr;  // owned while open
  bool given = false;      // a key named it: the name is not the default
};

// UTfopen - opens a file; null on failure, unless must == 1: "Cannot Open File: NAME: reason", status 1.
FILE* UTfopen(const char* name, const char* mode, int must);

// UTfclose - closes a stream and returns the result; a failure with must == 1 ends with
// "Error closing File", status 1.
int UTfclose(FILE* stream, int must);

// UTfilemake - a new record; with open_flag == 1 the file is opened at once (a failure leaves no stream).
FileRec UTfilemake(const char* name, const char* mode, int open_flag);

// UTfilerename - gives a record another name; an open stream is closed first. Returns the record.
FileRec& UTfilerename(FileRec& file, const char* name);

// UTfileopen - opens the record's file; a failure with must == 1 ends with "Error opening File" and the name,
// status -1. A directory counts as a failure (it could be opened, but not read). Returns the record.
FileRec& UTfileopen(FileRec& file, const char* mode, int must);

// UTfileclose - closes the record's stream; a failure with must == 1 ends with "Error closing File" and the
// name, status -1. Returns the record, its stream null.
FileRec& UTfileclose(FileRec& file, int must);

// UTfilewritten - makes sure that all that was written to the record's stream has reached the file.
// Does   flushes; nothing when the record has no stream
// Ends   when any write failed: "Error writing File: reason" and a line with the name, status 1
void UTfilewritten(const FileRec& file);

// UTlocaltime - the current local time in asctime layout, newline included; shared static buffer.
const char* UTlocaltime();

}  // namespace zelvan
