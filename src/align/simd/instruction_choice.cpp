// The choice among the instruction sets, in a file of its own: test programs link another in its place.
#include <initializer_list>

#include "align/simd/instruction_set.h"

namespace zelvan {

InstructionSet best_instruction_set() {
  for (const InstructionSet set : {InstructionSet::NEON, InstructionSet::AVX512VBMI, InstructionSet::AVX512,
                                   InstructionSet::AVX2, InstructionSet::SSE41}) {
    if (is_usable(set)) return set;
  }
  return InstructionSet::PORTABLE;
}

}  // namespace zelvan
