// The command line: pairs of key and value, with the keys, types and conversions of the defaults file.
#pragma once

#include "driver/params.h"

namespace zelvan {

// GetCmd - applies the arguments to the record.
// In     argv[0] is the program's name; the rest are pairs of key and value
// Returns the record; SUCCESS is -1 after an unknown key (reported; what follows it is not applied), else 1
// Ends   without arguments, after an odd number of them, and when PROBCUT2 exceeds PROBCUT (status -1); on a
//        refused PRECISION (status 0)
Params* GetCmd(Params* p, int argc, const char* const* argv);

}  // namespace zelvan
