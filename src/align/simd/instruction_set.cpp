#include "align/simd/instruction_set.h"

namespace zelvan {

bool is_usable(InstructionSet set) {
  switch (set) {
    case InstructionSet::REFERENCE:
    case InstructionSet::PORTABLE:
      return true;
#if defined(__x86_64__)
    // The compiler's check reads the processor's flags and asks whether the system saves the wide registers.
    case InstructionSet::SSE41:
      return __builtin_cpu_supports("sse4.1") != 0;
    case InstructionSet::AVX2:
      return __builtin_cpu_supports("avx2") != 0;
    case InstructionSet::AVX512:
      return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
             __builtin_cpu_supports("avx512vl") != 0;
    case InstructionSet::AVX512VBMI:
      return is_usable(InstructionSet::AVX512) && __builtin_cpu_supports("avx512vbmi") != 0;
#elif defined(__aarch64__)
    case InstructionSet::NEON:  // part of the architecture
      return true;
#endif
    default:
      return false;
  }
}

const char* instruction_set_name(InstructionSet set) {
  switch (set) {
    case InstructionSet::REFERENCE:
      return "reference";
    case InstructionSet::PORTABLE:
      return "portable";
    case InstructionSet::SSE41:
      return "SSE41";
    case InstructionSet::AVX2:
      return "AVX2";
    case InstructionSet::AVX512:
      return "AVX512";
    case InstructionSet::AVX512VBMI:
      return "AVX512VBMI";
    case InstructionSet::NEON:
      return "NEON";
  }
  return "";
}

}  // namespace zelvan
