// Opening a set of volumes (volume_list.h) as one database. Nothing is read but the indexes: sequences stay
// in their files, which are mapped, and are checked when they are read.
#pragma once

#include <cstdint>
#include <ctime>
#include <functional>

#include "bdb/volume_list.h"
#include "driver/params.h"
#include "seq/database_info.h"
#include "seq/matrix.h"
#include "seq/residue_reader.h"
#include "seq/sequence.h"
#include "util/file_record.h"
#include "util/mapped_file.h"
#include "util/memory.h"

namespace zelvan {

// One sequence file of a set.
struct Volume {
  FileRec file;  // its name; it is not open
  MappedFile text;
  int32_t first = 0;   // number of its first sequence in the set
  int64_t device = 0;  // the file as it was when it was opened
  int64_t number = 0;
  std::timespec changed{};
};

struct VolumeSet {
  BdbInfo info;  // of the whole set
  VolumeList list;
  UTvector<SeqRec> seqs;  // [info.nseq], in stored order; texts and residues in the mapped files, unchecked
  UTvector<Volume> volumes;  // none: no set is open
};

// open_volumes - opens the set that BDB_ROOT named by p->BDB_INDEX_FILE and p->BDB_SEQ_FILE.
// Out    out_set must stay where it is: p->binfo points to its header. p->APPLY_INDEX is the index flag
// Ends   on a file that cannot be opened, on a damaged one, on files of two builds, and on another alphabet
//        than the matrix has (status -1). A file that shrinks later ends the run with a sentence (status -1)
void open_volumes(VolumeSet& out_set, const ScoreMatrix& matrix, Params* p);

// check_volume_sequence - ends the run when the files do not hold what the index says of a sequence of the
// set (status -1).
void check_volume_sequence(const VolumeSet& set, const SeqRec& record, const ScoreMatrix& matrix);

// volume_reader - reads the sequences of a set as codes, checked.
// In     set, matrix: must outlive the reader
//        translate: may be empty; called with a copy of a sequence of letters before it is encoded
ReadCodes volume_reader(const VolumeSet& set, const ScoreMatrix& matrix,
                        const std::function<void(SeqRec&)>& translate);

// check_unchanged - ends the run when a file of the set was written to since it was opened (status -1). One
// that was replaced by another goes on being read.
void check_unchanged(const VolumeSet& set);

}  // namespace zelvan
