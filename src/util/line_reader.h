// Lines of text files that are read through a buffer of limited size.
#pragma once

#include <cstddef>
#include <cstdio>

#include "util/memory.h"

namespace zelvan {

// What a zero byte of a text file is read as: it would hide the rest of the text behind it.
constexpr char ZERO_BYTE_STAND_IN = '\x1a';  // "substitute" in ASCII

// UTlinebuffer - a buffer of `size` bytes for UTgetline.
// In     size >= 2; caller: the routine that reads, named in the message
// Ends   "No Space for buff in CALLER" with status -1 when there is no room
UTvector<char> UTlinebuffer(std::size_t size, const char* caller);

// UTgetline - reads the next line, its newline included, as a zero-terminated text.
// Does   at most buffer.size() - 1 bytes: the rest of a longer line comes with the next calls. The line ends
//        of other systems arrive as a plain newline (carriage return before a newline or the end of the
//        file), a zero byte as ZERO_BYTE_STAND_IN.
// Out    buffer: its size is unchanged
// Returns false at the end of the file, and when reading fails (ferror tells which); the text is then empty
bool UTgetline(FILE* stream, UTvector<char>& buffer);

}  // namespace zelvan
