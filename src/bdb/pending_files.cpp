#include "bdb/pending_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>

#include "bdb/volume_list.h"
#include "util/failure.h"
#include "util/file_identity.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr std::size_t WRITE_BUFFER = std::size_t{1} << 20;
constexpr const char* SUFFIX = ".tmp";
constexpr const char* ASIDE = ".old";
constexpr std::size_t SUFFIX_LENGTH = 4;  // of both

template <class Pending>
[[noreturn]] void end_unwritten(const Pending& pending, const PendingFile& file) {
  discard(pending);
  UTerror("Error writing File");
  UTend_stream(std_err, "File: %s was not written: check the space on its disk\n", file.name.c_str());
}

template <class Pending>
[[noreturn]] void end_unopened(const Pending& pending, const PendingFile& file) {
  discard(pending);
  UTerror("Error opening File");
  UTend_input(std_err, "%s\n", file.name.c_str());
}

template <class Pending>
[[noreturn]] void end_unreplaced(const Pending& pending, const PendingFile& file) {
  discard(pending);
  UTerror("Error replacing File");
  UTend_stream(std_err,
               "File: %s was not replaced: check the rights to it and to its folder, then build again\n",
               file.name.c_str());
}

PendingFile prepare(const UTstring& name, std::size_t buffer) {
  PendingFile file;
  file.name = name;
  file.target = UTfollow(name.c_str());
  file.temporary = temporary_name(file.target);
  file.aside = file.temporary;  // of that size: what it becomes later
  file.buffer.resize(buffer);
  return file;
}

// Creates the temporary file, never one that is there already: the folder may be shared with other machines,
// where a process has the same number. Returns its descriptor or -1.
int create_temporary(PendingFile& file, const struct stat* old_opt) {
  const int descriptor = create_unique(file.temporary);
  if (descriptor == -1) return -1;
  file.exists = true;
  file.aside.assign(file.temporary, 0, file.temporary.size() - SUFFIX_LENGTH).append(ASIDE);
  const mode_t mask = umask(0);
  umask(mask);
  // The owner is kept by a privileged process, the group by one of its members.
  [[maybe_unused]] const bool kept = old_opt == nullptr ||
                                     fchown(descriptor, old_opt->st_uid, old_opt->st_gid) == 0 ||
                                     fchown(descriptor, static_cast<uid_t>(-1), old_opt->st_gid) == 0;
  fchmod(descriptor, old_opt != nullptr ? old_opt->st_mode & 0777 : 0666 & ~mask);
  return descriptor;
}

template <class Pending>
void open_file(const Pending& pending, PendingFile& file) {
  struct stat old;
  const bool there = stat(file.name.c_str(), &old) == 0;
  if (!there && errno != ENOENT) end_unopened(pending, file);
  if (there && !S_ISREG(old.st_mode)) {
    file.stream = std::fopen(file.name.c_str(), "wb");
  } else {
    if (there) file.replaced = open(file.name.c_str(), O_WRONLY | O_CLOEXEC);
    if (there && file.replaced == -1) end_unopened(pending, file);
    const int descriptor = create_temporary(file, there ? &old : nullptr);
    if (descriptor != -1) file.stream = fdopen(descriptor, "wb");
  }
  if (file.stream == nullptr) end_unopened(pending, file);
  if (!file.buffer.empty()) std::setvbuf(file.stream, file.buffer.data(), _IOFBF, file.buffer.size());
}

// Some filesystems cannot be asked to flush; that is no failure to write.
bool flushed_to_disk(int descriptor) {
  return fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
}

template <class Pending>
void close_pending(const Pending& pending, PendingFile& file) {
  FILE* stream = file.stream;
  file.stream = nullptr;
  if (std::fflush(stream) != 0) end_unwritten(pending, file);
  if (file.exists && !flushed_to_disk(fileno(stream))) end_unwritten(pending, file);
  if (std::fclose(stream) != 0) end_unwritten(pending, file);
}

int open_folder(const UTstring& file) {
  return open(UTfolder(file).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

void flush_folder(int descriptor) {
  if (descriptor != -1) fsync(descriptor);
}

// Keeps other builds in the same folder from renaming their files between ours. Where locks are not to be had
// the files are renamed without.
void lock_folder(int descriptor, const UTstring& file) {
  if (descriptor == -1 || flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
  std::fprintf(std_err, "Waiting for another build, which is storing its files in %s\n",
               UTfolder(file).c_str());
  std::fflush(std_err);
  flock(descriptor, LOCK_EX);
}

// The folders of the two files of a database, -1 where it cannot be opened.
using Folders = std::array<int, 2>;

Folders lock_folders(const PendingFile& index, const PendingFile& sequences) {
  const Folders folders = {open_folder(index.target), open_folder(sequences.target)};
  lock_folder(folders[0], index.target);
  for (const int folder : folders) flush_folder(folder);
  return folders;
}

void unlock_folders(const Folders& folders) {
  for (const int folder : folders) {
    flush_folder(folder);
    if (folder != -1) close(folder);
  }
}

void remove_temporary(const PendingFile& file) {
  if (file.exists) std::remove(file.temporary.c_str());
}

void remove_volumes(const UTstring& name, int32_t first) {
  for (const UTstring& file : volume_files(name, first)) std::remove(file.c_str());
}

void take_name(const PendingVolumes& pending, PendingFile& file) {
  if (!file.exists) return;
  if (std::rename(file.temporary.c_str(), file.target.c_str()) != 0) end_unreplaced(pending, file);
  file.exists = false;
}

// Two names cannot change at once. To keep new sequences from ever standing beside an old index, which could
// suit them by its numbers and not by its alphabet, the old index goes first: a kill in between leaves
// sequences without an index, and a search that is just opening the two can see that its index has gone. All
// that takes time is done before or after: what is written was flushed to the disk, and the blocks of the old
// files are not released while they are open or stand aside.
void rename_files(const PendingDatabase& pending) {
  const PendingFile& index = pending.index;
  const PendingFile& sequences = pending.sequences;
  const bool aside = index.exists && std::rename(index.target.c_str(), index.aside.c_str()) == 0;
  if (index.exists && !aside && errno != ENOENT) end_unreplaced(pending, index);
  if (sequences.exists && std::rename(sequences.temporary.c_str(), sequences.target.c_str()) != 0) {
    const int reason = errno;
    if (aside) std::rename(index.aside.c_str(), index.target.c_str());
    errno = reason;
    end_unreplaced(pending, sequences);
  }
  if (index.exists && std::rename(index.temporary.c_str(), index.target.c_str()) != 0) {
    const int reason = errno;
    if (aside) std::remove(index.aside.c_str());  // of no use: it is the index of other sequences
    errno = reason;
    end_unreplaced(pending, index);
  }
  if (aside) std::remove(index.aside.c_str());
}

}  // namespace

UTstring temporary_name(const UTstring& target) {
  return UTcat({target, ".XXXXXX", SUFFIX});  // mkstemps puts letters in the place of the X
}

int create_unique(UTstring& name) {
  return mkstemps(name.data(), static_cast<int>(SUFFIX_LENGTH));
}

PendingDatabase prepare_files(const UTstring& index_name, const UTstring& sequences_name) {
  PendingDatabase pending;
  pending.index = prepare(index_name, WRITE_BUFFER);
  pending.sequences = prepare(sequences_name, WRITE_BUFFER);
  return pending;
}

PendingVolumes prepare_volumes(const UTstring& index_name, const UTstring& sequences_name, int32_t count) {
  PendingVolumes pending;
  pending.index_name = index_name;
  pending.sequences_name = sequences_name;
  pending.count = count;
  for (int32_t volume = 0; volume < count; ++volume) {
    pending.files.push_back(prepare(volume_name(index_name, volume), 0));
    pending.files.push_back(prepare(volume_name(sequences_name, volume), 0));
  }
  pending.list = prepare(volumes_name(index_name), 0);
  return pending;
}

void open_pending(const PendingDatabase& pending, PendingFile& file) {
  open_file(pending, file);
}

void put(const PendingDatabase& pending, const PendingFile& file, const void* bytes, std::size_t size) {
  if (std::fwrite(bytes, 1, size, file.stream) != size) end_unwritten(pending, file);
}

void write_pending(const PendingVolumes& pending, PendingFile& file, const void* bytes, std::size_t size) {
  open_file(pending, file);
  if (file.replaced != -1) close(file.replaced);  // a set may have more files than a process may open
  file.replaced = -1;
  if (std::fwrite(bytes, 1, size, file.stream) != size) end_unwritten(pending, file);
  close_pending(pending, file);
}

void discard(const PendingDatabase& pending) {
  const int reason = errno;
  for (const PendingFile* file : {&pending.index, &pending.sequences}) remove_temporary(*file);
  errno = reason;
}

void discard(const PendingVolumes& pending) {
  const int reason = errno;
  for (const PendingFile& file : pending.files) remove_temporary(file);
  remove_temporary(pending.list);
  errno = reason;
}

void publish(PendingDatabase& pending) {
  close_pending(pending, pending.index);
  close_pending(pending, pending.sequences);
  const Folders folders = lock_folders(pending.index, pending.sequences);
  rename_files(pending);
  // Volumes without a list may be databases of their own, which merely have such names. A kill in between
  // leaves two databases of one name, which are refused.
  const UTstring list = volumes_name(pending.index.name);
  if (pending.index.exists && access(list.c_str(), F_OK) == 0) {
    remove_volumes(pending.index.name, 0);
    remove_volumes(pending.sequences.name, 0);
    std::remove(list.c_str());
  }
  unlock_folders(folders);
  for (const PendingFile* file : {&pending.index, &pending.sequences}) {
    if (file->replaced != -1) close(file->replaced);
  }
}

void publish(PendingVolumes& pending) {
  const PendingFile& first = pending.files.front();
  const Folders folders = lock_folders(first, pending.files[1]);
  const bool replaces_set = std::remove(pending.list.target.c_str()) == 0;
  if (!replaces_set && errno != ENOENT) end_unreplaced(pending, pending.list);
  for (PendingFile& file : pending.files) take_name(pending, file);
  if (replaces_set) {
    remove_volumes(pending.index_name, pending.count);
    remove_volumes(pending.sequences_name, pending.count);
  }
  for (const int folder : folders) flush_folder(folder);
  take_name(pending, pending.list);
  std::remove(pending.index_name.c_str());
  std::remove(pending.sequences_name.c_str());
  unlock_folders(folders);
}

}  // namespace zelvan
