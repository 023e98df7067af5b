// The three streams of a run. Every diagnostic of the support library goes to std_err. They are the process's
// own streams from UTinitfile on, until the configuration points them at the ones the user asked for.
#pragma once

#include <cstdio>

namespace zelvan {

extern FILE* std_in;
extern FILE* std_out;  // the report
extern FILE* std_err;  // diagnostics

// UTholdstreams - makes sure that the descriptors of standard input, output and error are taken. A run that was
// started without one of them would otherwise open its first file under that number, and print into it or read
// from it. What stands in for a missing stream fails when it is read or written, so that a lost report is
// noticed. Call it before any file is opened.
void UTholdstreams();

// UTinitfile - points the three streams at the process's standard input, output and error.
void UTinitfile();

}  // namespace zelvan
