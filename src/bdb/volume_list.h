// Databases of any size: a set of volumes NAME.00, NAME.01, ..., each a binary database of its own that can
// also be searched alone, and the list that makes one database of them, NAME.volumes.
//
// The list is a text. "ZELVAN volumes 1"; the totals of sequences, residues and characters; how often each
// byte, by its number, stands for a residue; a line for each volume with its own counts and the fingerprint
// of its index file; "end". It is the last file of a set to be stored and the first to be taken away, so that
// volumes of two builds never pass for one set.
#pragma once

#include <cstdint>

#include "driver/volume_names.h"
#include "seq/composition.h"
#include "util/file_record.h"
#include "util/memory.h"

namespace zelvan {

struct VolumeEntry {
  int32_t nseq = 0;
  int32_t nres = 0;
  int32_t totchar = 0;
  uint64_t fingerprint = 0;  // of the whole index file
};

struct VolumeList {
  int64_t nseq = 0;
  int64_t nres = 0;
  int64_t totchar = 0;
  ByteCounts counts{};  // of the residues as they are stored
  UTvector<VolumeEntry> volumes;
};

// volume_files - the files beside a database that are named like those of its volumes, from number `first`
// on.
UTvector<UTstring> volume_files(const UTstring& name, int32_t first);

// is_volume_set - whether the name stands for a set: its first volume or its list is there, and no database
// of that very name.
// Ends   when both are there (status -1)
bool is_volume_set(const UTstring& index_name);

// fingerprint - a number that tells the contents of one file from those of another.
uint64_t fingerprint(const char* bytes, std::size_t size);

// list_text, read_list - the text of a list, and the list of a text.
// Returns from read_list: what is wrong with the text, or null
UTstring list_text(const VolumeList& list);
const char* read_list(const char* text, VolumeList& out_list);

}  // namespace zelvan
