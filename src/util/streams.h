// The three streams of a run. Every diagnostic of the support library goes to std_err. They are the process's
// own streams from UTinitfile on, until the configuration points them at the ones the user asked for.
#pragma once

#include <cstdio>

#include "util/file_record.h"
#include "util/memory.h"

namespace zelvan {

extern FILE* std_in;
extern FILE* std_out;  // the report
extern FILE* std_err;  // diagnostics

// UTholdstreams - makes sure that the descriptors of standard input, output and error are taken. A run that
// was started without one of them would otherwise open its first file under that number, and print into it or
// read from it. What stands in for a missing stream fails when it is read or written, so that a lost report
// is noticed. Call it before any file is opened.
void UTholdstreams();

// UTinitfile - points the three streams at the process's standard input, output and error.
void UTinitfile();

// UTopen_stream - opens a file that the user asked for as an output stream, as UTfopen(name, "w", 1) does;
// but what an existing file holds stays until it is known that the run does not need it.
// Returns the stream, which stays open to the end of the run
FILE* UTopen_stream(const char* name);

// UTopened_streams - what UTopen_stream opened so far, in that order.
const UTvector<FileRec>& UTopened_streams();

// UTempty_streams - the files of UTopen_stream lose what they held before they were opened.
void UTempty_streams();

// UTcut_streams - the same for those into which something was written; the others keep what they held. For a
// run that ends before its keys are known.
void UTcut_streams();

// UTdivert_streams - what was and what will be written to the streams of UTopen_stream goes to the process's
// standard error; their files stay as they were.
void UTdivert_streams();

}  // namespace zelvan
