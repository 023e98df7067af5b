// The instruction sets that the vector scans are compiled for.
#pragma once

namespace zelvan {

// In order of preference: a later one is faster wherever it runs. REFERENCE is the scalar kernels themselves.
enum class InstructionSet { REFERENCE, PORTABLE, SSE41, AVX2, AVX512 };

// is_usable - whether processor and operating system both support the set.
bool is_usable(InstructionSet set);

// best_instruction_set - the last usable one; found once and kept.
InstructionSet best_instruction_set();

const char* instruction_set_name(InstructionSet set);

}  // namespace zelvan
