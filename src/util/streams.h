// The three streams of a run. Every diagnostic of the support library goes to std_err. They are the process's
// own streams from UTinitfile on, until the configuration points them at the ones the user asked for.
#pragma once

#include <cstdio>

extern FILE* std_in;
extern FILE* std_out;  // the report
extern FILE* std_err;  // diagnostics

// UTinitfile - points the three streams at the process's standard input, output and error.
void UTinitfile();
