// Outputs that name a file which the run reads, or writes for another purpose.
#pragma once

#include "driver/params.h"

namespace zelvan {

// check_outputs - refuses a run whose mode would write to a file that it also reads, or write two outputs to
// one file. To be called when all keys are known and before anything is emptied.
// Does   compares files, whatever their names; devices and pipes may be named twice, and so may the process's
//        own streams, which whoever started the run has opened
// Ends   with both keys and the file named on the process's standard error, every file as it was (status -1)
void check_outputs(const Params* p);

}  // namespace zelvan
