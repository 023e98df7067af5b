// Takes the place of src/align/simd/instruction_choice.cpp in test programs.
#include "support/forced_set.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace zelvan {
namespace {

constexpr InstructionSet ALL_SETS[] = {
    InstructionSet::REFERENCE, InstructionSet::PORTABLE,   InstructionSet::SSE41, InstructionSet::AVX2,
    InstructionSet::AVX512,    InstructionSet::AVX512VBMI, InstructionSet::NEON};

InstructionSet asked_for() {
  const char* name = std::getenv("ZELVAN_TEST_SET");
  InstructionSet last = InstructionSet::REFERENCE;
  for (const InstructionSet set : ALL_SETS) {
    if (!is_usable(set)) continue;
    last = set;
    if (name != nullptr && std::strcmp(name, instruction_set_name(set)) == 0) return set;
  }
  if (name != nullptr) {
    std::fprintf(stderr, "No usable instruction set is called %s\n", name);
    std::_Exit(77);
  }
  return last;
}

}  // namespace

InstructionSet forced_set = asked_for();

InstructionSet best_instruction_set() {
  return forced_set;
}

}  // namespace zelvan
