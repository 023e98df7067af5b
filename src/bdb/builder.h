// Building a binary database (its layout: index_record.h).
#pragma once

#include "driver/params.h"

namespace zelvan {

// makedb - mode 99: reads the text database DB_FILE and writes it to p->BDB_INDEX_FILE and p->BDB_SEQ_FILE.
// Does   residues are stored as codes when APPLY_INDEX is 1, and sequences in ascending order of length (ties
//        as UTindexx leaves them) when DO_SORT is 1. Both files are written under names of their own in the
//        same directory, "NAME.PID.tmp", and take the real names only when both are complete: a build that
//        fails leaves nothing behind, one that is killed leaves at most its temporary files, and what stood
//        under the real names before stays whole. Of two builds into one name the later one to end prevails,
//        never a mixture. At the end the two names go to std_err
// Ends   on every fault of the input, on a database that 32-bit positions cannot address, and when an output
//        file cannot be opened (status -1); when it cannot be written (status 1)
void makedb(Params* p);

}  // namespace zelvan
