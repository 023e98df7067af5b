// Default gap penalties per search mode and score matrix.
#pragma once

#include "driver/params.h"

namespace zelvan {

// GetGaps - reads the gap-defaults file into p->GAPDEFS and p->NGAPDEFS, penalties scaled by the PRECISION in
// force.
// Does   one entry a line, "mode:matrix:LD_PEN:LI_PEN:FS_PEN:FSE_PEN"; lines that begin with "#" are
//        comments, the first empty line ends the file, GAPDEFS_CAPACITY entries are the most
// Returns true, p->SUCCESS = 1; or false after a report on std_err, p->SUCCESS = -1
bool GetGaps(const char* path, Params* p);

// setgapdefs - copies the penalties of the first entry that fits MODE and MATRIX_FILE into the record;
// changes nothing when USE_GAPDEFS is not 1 or no entry fits. Call it before the matrix name gets its
// directory.
void setgapdefs(Params* p);

}  // namespace zelvan
