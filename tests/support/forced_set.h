// The instruction set of the scans in test programs that link forced_set.cpp.
#pragma once

#include "align/simd/instruction_set.h"

namespace zelvan {

// What best_instruction_set gives: the set that the environment variable ZELVAN_TEST_SET names (as
// instruction_set_name), otherwise the last usable one; targets may set another that is usable.
extern InstructionSet forced_set;

}  // namespace zelvan
