// What the first bytes of a text file tell, before anything is made of them.
#pragma once

#include <cstddef>

#include "util/memory.h"

namespace zelvan {

// UTmark_length - the length of a byte-order mark (of UTF-8) that precedes the text; 0 when there is none.
std::size_t UTmark_length(const char* bytes, std::size_t n);

// UTskip_mark - removes such a mark from the first line of a file.
void UTskip_mark(UTvector<char>& line);

// UTrefuse_compressed - ends the run when the bytes are the start of a file compressed by gzip, bzip2, xz or
// zstd: searched as it stands it would be noise.
// In     bytes[0..n-1]: the start of the file (seven are enough; zero bytes may have been replaced); how:
//        what is done with the output of the program that unpacks it, the end of the command line that the
//        message shows
// Ends   "NAME is compressed (gzip). Pass what is in it: zcat NAME HOW", status -1
void UTrefuse_compressed(const char* bytes, std::size_t n, const char* name, const char* how);

}  // namespace zelvan
