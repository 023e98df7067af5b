// Building a binary database (its layout: index_record.h).
#pragma once

#include "driver/params.h"

namespace zelvan {

// makedb - mode 99: reads the text database DB_FILE and writes it to p->BDB_INDEX_FILE and p->BDB_SEQ_FILE,
// or, when 32-bit positions cannot address it, to a set of volumes of that name (volume_list.h).
// Does   residues are stored as codes when APPLY_INDEX is 1, and sequences in ascending order of length (ties
//        as UTindexx leaves them) when DO_SORT is 1. The files take their names when all are complete, see
//        pending_files.h. At the end the names go to std_err
// Ends   on every fault of the input and when an output file cannot be opened (status -1); when it cannot be
//        written or replaced (status 1)
void makedb(Params* p);

}  // namespace zelvan
