#include "util/file_identity.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace zelvan {
namespace {

constexpr int MOST_LINKS = 40;  // as many as the system follows

FileIdentity identity_of(const struct stat& status) {
  FileIdentity identity;
  identity.regular = S_ISREG(status.st_mode);
  identity.device = status.st_dev;
  identity.number = status.st_ino;
  return identity;
}

}  // namespace

UTstring UTfollow(const char* name) {
  UTstring path = name;
  char target[PATH_MAX];
  for (int links = 0; links < MOST_LINKS; ++links) {
    const ssize_t length = readlink(path.c_str(), target, sizeof target);
    if (length <= 0 || length == static_cast<ssize_t>(sizeof target)) return path;
    const UTstring folder =
        target[0] == '/' || path.find('/') == UTstring::npos ? UTstring() : UTfolder(path);
    path = folder;
    path.append(target, static_cast<std::size_t>(length));
  }
  return name;
}

UTstring UTfolder(const UTstring& name) {
  const std::size_t slash = name.rfind('/');
  return slash == UTstring::npos ? UTstring(".") : name.substr(0, slash + 1);
}

FileIdentity UTidentify(const char* name) {
  struct stat status;
  if (stat(name, &status) == 0) return identity_of(status);
  if (errno != ENOENT) return {};
  const UTstring path = UTfollow(name);
  if (stat(UTfolder(path).c_str(), &status) != 0) return {};
  FileIdentity identity = identity_of(status);
  identity.regular = true;
  identity.name = path.substr(path.rfind('/') + 1);  // npos + 1 is 0
  return identity;
}

FileIdentity UTidentify(FILE* stream) {
  struct stat status;
  return fstat(fileno(stream), &status) == 0 ? identity_of(status) : FileIdentity();
}

bool UTsame_file(const FileIdentity& a, const FileIdentity& b) {
  return a.regular && b.regular && a.device == b.device && a.number == b.number && a.name == b.name;
}

}  // namespace zelvan
