// Files that are read where they lie, in the page cache: as many processes as read one share its memory.
#pragma once

#include <cstdint>

#include "util/memory.h"

namespace zelvan {

// The bytes of a file; nothing is owned, the mapping lasts to the end of the run.
struct MappedFile {
  const char* bytes = nullptr;
  int64_t size = 0;
};

// UTmap_file - maps the first `size` bytes of an open file for reading. The descriptor may be closed.
// Returns no bytes when they cannot be mapped (errno), or when size is 0
MappedFile UTmap_file(int descriptor, int64_t size);

// UTforget_pages - says that bytes[from..to-1] were read: they no longer count as memory of this process.
void UTforget_pages(const MappedFile& file, int64_t from, int64_t to);

// UTunmap_file - releases a mapping.
void UTunmap_file(MappedFile& file);

// UTexpect_lost_files - what to say when mapped bytes cannot be read any more, because their file shrank or
// its disk failed, and then to end with status -1. Streams are not flushed then: flush what must not be lost
// before long work on mapped bytes.
// In     sentence: newline included, at most 4,000 characters are kept
void UTexpect_lost_files(const UTstring& sentence);

}  // namespace zelvan
