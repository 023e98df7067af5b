#include "driver/output_files.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "driver/volume_names.h"
#include "util/failure.h"
#include "util/file_identity.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

enum class Role {
  INPUT,
  OUTPUT,
  OWN,       // a stream of the process as an output: whoever started the run has opened, and emptied, it
  REPLACED,  // what STDOUT or STDERR named before another value came: it loses its contents, and nothing more
};

// One file of a run.
struct FileUse {
  const char* key;
  UTstring name;
  FileIdentity file;
  Role role;
};

using FileUses = UTvector<FileUse>;

bool names_own_stream(std::string_view name) {
  return name.starts_with("/dev/std") || name.starts_with("/dev/fd/") || name.starts_with("/proc/self/fd/");
}

void read_by(FileUses& uses, const char* key, const UTstring& name) {
  uses.push_back({key, name, UTidentify(name.c_str()), Role::INPUT});
}

void written_by(FileUses& uses, const char* key, const UTstring& name) {
  uses.push_back({key, name, UTidentify(name.c_str()), names_own_stream(name) ? Role::OWN : Role::OUTPUT});
}

void add_streams(FileUses& uses, const Params* p) {
  if (p->STDOUT == stdout) uses.push_back({"STDOUT", "", UTidentify(stdout), Role::OWN});
  if (p->STDERR == stderr) uses.push_back({"STDERR", "", UTidentify(stderr), Role::OWN});
  for (const FileRec& opened : UTopened_streams()) {
    if (opened.stream == p->STDOUT || opened.stream == p->STDERR) {
      written_by(uses, opened.stream == p->STDOUT ? "STDOUT" : "STDERR", opened.name);
    } else {
      uses.push_back({"an earlier STDOUT or STDERR", opened.name, UTidentify(opened.stream), Role::REPLACED});
    }
  }
}

void add_database(FileUses& uses, void (*add)(FileUses&, const char*, const UTstring&), const Params* p) {
  add(uses, "BDB_ROOT (.bix)", p->BDB_INDEX_FILE.name);
  add(uses, "BDB_ROOT (.bsq)", p->BDB_SEQ_FILE.name);
  for (int32_t volume = 0;; ++volume) {
    const UTstring index = volume_name(p->BDB_INDEX_FILE.name, volume);
    if (access(index.c_str(), F_OK) != 0) break;
    if (volume == 0) add(uses, "BDB_ROOT (.volumes)", volumes_name(p->BDB_INDEX_FILE.name));
    add(uses, "BDB_ROOT (.bix of a volume)", index);
    add(uses, "BDB_ROOT (.bsq of a volume)", volume_name(p->BDB_SEQ_FILE.name, volume));
  }
}

// What the drivers of the modes open.
FileUses files_of_run(const Params* p) {
  constexpr int32_t BUILD = 99, EXTRACT = 100, SUBSET = 667;
  const int32_t mode = p->MODE;
  const bool iterated = mode == 0 || mode == 2 || mode == 200 || mode == 202 || mode == 210 || mode == 212;
  const bool listed = mode == 12 || mode == 20 || mode == 22;  // translated, with a list of hits
  const bool translated = listed || mode == 10;
  const bool search = iterated || translated;
  const bool binary =
      p->BDB_GIVEN != 0 && (iterated || listed || mode == EXTRACT || (mode == SUBSET && !p->DB_FILE.given));

  FileUses uses;
  if (search) read_by(uses, "QSEQ_FILE", p->QSEQ_FILE.name);
  if (translated) read_by(uses, "CODON_FILE", UTcat({p->GENERAL_DIR, "/", p->CODON_FILE.name}));
  if (search || mode == BUILD || mode == EXTRACT || (mode == SUBSET && binary)) {
    read_by(uses, "MATRIX_FILE", UTcat({p->MATRIX_DIR, "/", p->MATRIX_FILE.name}));
  }
  if (binary) {
    add_database(uses, read_by, p);
  } else if (search || mode == BUILD || mode == EXTRACT || mode == SUBSET) {
    read_by(uses, "DB_FILE", p->DB_FILE.name);
  }
  if (mode == EXTRACT) uses.push_back({"STDIN", "", UTidentify(p->STDIN), Role::INPUT});

  add_streams(uses, p);
  if (mode == BUILD) add_database(uses, written_by, p);
  if (iterated && p->PRINT_BLOCK_FILE == 1) {
    written_by(uses, "BLOCK_FILE_OUT", p->BLOCK_FILE_OUT.name);
    if (p->PRINT_FRAG_FILE == 1) written_by(uses, "FRAG_FILE_OUT", p->FRAG_FILE_OUT.name);
  }
  if (mode == EXTRACT || ((iterated || listed) && p->EXTRACT_SEQ >= 1)) {
    written_by(uses, "EXTRACT_FILE", p->EXTRACT_FILE.name);
  }
  return uses;
}

bool destroys(const FileUse& writer, const FileUse& other) {
  if (!UTsame_file(writer.file, other.file)) return false;
  return (writer.role == Role::OUTPUT && other.role != Role::REPLACED) ||
         (writer.role == Role::REPLACED && other.role == Role::INPUT);
}

}  // namespace

void check_outputs(const Params* p) {
  const int number = errno;  // of an earlier failure, which a message may still tell; no file need exist here
  const FileUses uses = files_of_run(p);
  for (const FileUse& writer : uses) {
    for (const FileUse& other : uses) {
      if (&writer == &other || !destroys(writer, other)) continue;
      UTdivert_streams();
      UTend_input(stderr, "%s would overwrite the file of %s: both are %s. Give %s another name\n",
                  writer.key, other.key, writer.name.c_str(), writer.key);
    }
  }
  errno = number;
}

}  // namespace zelvan
