#include "align/instruction_set.h"

namespace {

InstructionSet find_best() {
  if (is_usable(InstructionSet::AVX2)) return InstructionSet::AVX2;
  return InstructionSet::REFERENCE;
}

}  // namespace

bool is_usable(InstructionSet set) {
  switch (set) {
    case InstructionSet::REFERENCE:
      return true;
#if defined(__x86_64__)
    // The compiler's check reads the processor's flags and asks whether the system saves the wide registers.
    case InstructionSet::AVX2:
      return __builtin_cpu_supports("avx2") != 0;
#endif
    default:
      return false;
  }
}

InstructionSet best_instruction_set() {
  static const InstructionSet best = find_best();
  return best;
}

const char* instruction_set_name(InstructionSet set) {
  switch (set) {
    case InstructionSet::REFERENCE:
      return "reference";
    case InstructionSet::AVX2:
      return "AVX2";
  }
  return "";
}
