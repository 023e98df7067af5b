// Which file a name stands for: links followed, and one file recognised under two names.
#pragma once

#include <sys/types.h>

#include <cstdio>

#include "util/memory.h"

namespace zelvan {

// UTfollow - the name of the file that opening `name` for writing reaches or creates: symbolic links at its
// end are followed, also to a file that does not exist. A circle of links is returned as it stands.
UTstring UTfollow(const char* name);

// UTfolder - the folder that a name lies in, as the name tells it: up to and with its last "/", or ".".
UTstring UTfolder(const UTstring& name);

// A file as the system knows it: what exists by its own number, what does not by its folder's and its name.
struct FileIdentity {
  bool regular = false;  // or still to be created: a file of which a second writer destroys the contents
  dev_t device = 0;
  ino_t number = 0;
  UTstring name;  // within the folder `number`; empty for what exists
};

// UTidentify - the identity of the file that a name or an open stream stands for. What is not to be found,
// such as a name in a missing folder, is not regular.
FileIdentity UTidentify(const char* name);
FileIdentity UTidentify(FILE* stream);

// UTsame_file - whether both are the same regular file.
bool UTsame_file(const FileIdentity& a, const FileIdentity& b);

}  // namespace zelvan
