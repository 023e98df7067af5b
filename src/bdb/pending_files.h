// The files of a database while they are being built. Each is written beside the file that it will replace,
// under a name of its own, "NAME.XXXXXX.tmp"; all take their real names when all are complete. A
// build that fails leaves nothing behind, one that is killed at most such files, and what stood under the
// real names before stays whole.
//
// Otherwise a file is opened as fopen(name, "w") opens it: one that may not be written ends the run, a
// symbolic link is followed, permissions and owner stay those of the file that is replaced, and what is no
// regular file (a device, a pipe) is written as it stands.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "util/memory.h"

namespace zelvan {

struct PendingFile {
  UTstring name;        // as the user knows it
  UTstring target;      // the file that this name stands for
  UTstring temporary;   // what is written; empty when the target itself is
  UTstring aside;       // where the old file stands while the new ones take their names
  bool exists = false;  // under its temporary name
  int replaced = -1;    // descriptor of the file that stands under the name, -1 for none
  FILE* stream = nullptr;
  UTbuffer<char> buffer;  // of the stream
};

struct PendingDatabase {
  PendingFile index;
  PendingFile sequences;
};

// A set of volumes: index and sequences of each in turn, and the list of them.
struct PendingVolumes {
  UTstring index_name;  // of a single database of that name
  UTstring sequences_name;
  int32_t count = 0;  // of the volumes
  UTvector<PendingFile> files;
  PendingFile list;
};

// prepare_files - everything about two files that takes memory: exhausted memory ends a run where it stands,
// which is to be before any file exists.
PendingDatabase prepare_files(const UTstring& index_name, const UTstring& sequences_name);
PendingVolumes prepare_volumes(const UTstring& index_name, const UTstring& sequences_name, int32_t count);

// open_pending - opens one of the files.
// Ends   when it cannot be opened, the reason and the name on std_err (status -1)
void open_pending(const PendingDatabase& pending, PendingFile& file);

// temporary_name - "TARGET.XXXXXX.tmp", of which create_unique makes a name that no file has.
UTstring temporary_name(const UTstring& target);

// create_unique - creates a file of such a name. Returns its descriptor or -1, errno set.
int create_unique(UTstring& name);

// put - writes bytes to one of the files. Ends when they cannot be written (status 1).
void put(const PendingDatabase& pending, const PendingFile& file, const void* bytes, std::size_t size);

// write_pending - opens one of the files of a set, writes it whole and closes it.
// Ends   as open_pending and put
void write_pending(const PendingVolumes& pending, PendingFile& file, const void* bytes, std::size_t size);

// discard - removes what was written so far. The reason of a failure, errno, survives.
void discard(const PendingDatabase& pending);
void discard(const PendingVolumes& pending);

// publish - closes both files and gives them their names. A listed set of volumes of that name is removed.
// Does   of two builds into one name the later one to end prevails, never a mixture; a build that has to wait
//        for another one says so on std_err
// Ends   when a file cannot be written or replaced (status 1)
void publish(PendingDatabase& pending);

// publish - the same for the files of a set, which were written: the list of the former set goes first, the
// new one comes last, and then a single database of that name is removed, as are volumes of the former set
// beyond the last.
void publish(PendingVolumes& pending);

}  // namespace zelvan
