// The header of the database in use. The builder writes it, the loader reads it; for a text database the
// driver fills the two counts only. In files the counts have 32 bits and describe that file; here they are
// those of the whole database, of a set of volumes, too.
#pragma once

#include <cstdint>

#include "util/memory.h"

namespace zelvan {

// Fields in the order of the index file.
struct BdbInfo {
  int32_t index_flag = 0;    // 1: residues are stored as codes, 0: as letters
  int32_t index_length = 0;  // bytes of `index`
  UTstring index;            // matrix letters and the gap character at build time
  int32_t nseq = 0;
  int64_t nres = 0;     // residues, pads not counted; the measure of database size in all statistics
  int64_t totchar = 0;  // bytes of the sequence file; text database: equal to nres
  int32_t date_length = 0;
  UTstring date;  // asctime layout, newline included
  int32_t name_length = 0;
  UTstring name;  // source file
};

}  // namespace zelvan
