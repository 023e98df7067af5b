// How a run fails: a plain sentence on an error stream, then the end of the process, which nothing else may
// bring about. The exit statuses differ on purpose by family: -1 for configuration, input files and fits;
// 0 for exhausted memory and for the fatal error routine; 1 for streams.
#pragma once

#include <cstdio>

#if defined(__GNUC__)
#define UT_PRINTF(format_at, values_at) __attribute__((format(printf, format_at, values_at)))
#else
#define UT_PRINTF(format_at, values_at)
#endif

namespace zelvan {

// UTerror - reports a message with the system's description of the current error number.
// Does   writes "message: description\n" (without "message: " when the text is empty) to std_err
// Ends   never
void UTerror(const char* message);

// error - the same report; with exit_flag != 0 the process then ends with status 0 (deliberately 0).
void error(const char* message, int exit_flag);

// The ends of a run, one per status. The printf-style sentence (newline included by the caller) is written to
// `stream` first; an empty format writes nothing, for callers that have already said why.
[[noreturn]] void UTend_input(FILE* stream, const char* format, ...) UT_PRINTF(2, 3);   // status -1
[[noreturn]] void UTend_stream(FILE* stream, const char* format, ...) UT_PRINTF(2, 3);  // status 1
[[noreturn]] void UTend_fault(FILE* stream, const char* format, ...) UT_PRINTF(2, 3);   // status 0
[[noreturn]] void UTend_memory(const char* message);  // UTerror's report on std_err, status 0

// UTend_process - what all of them end with: exit. It has a source file of its own, so that a program that
// must outlive a run, such as a fuzzer, can be linked with another one, which may throw.
[[noreturn]] void UTend_process(int status);

// UTend_at_once - the end without flushing any buffer, for a signal that interrupted whatever was going on.
[[noreturn]] void UTend_at_once(int status);

}  // namespace zelvan
