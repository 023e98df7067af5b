// The instruction sets that the vector kernels are compiled for. Plain data and declarations only, because
// kernel objects include it.
#pragma once

#include <cstdint>

namespace zelvan {

// In order of preference: a later one is faster wherever it runs. REFERENCE is the scalar kernels themselves.
// AVX512VBMI, with its permutes of bytes, has a kernel of its own for the scan of proteins; elsewhere it is
// AVX512.
enum class InstructionSet { REFERENCE, PORTABLE, SSE41, AVX2, AVX512, AVX512VBMI, NEON };

// How many bits of a register one lane takes.
enum class LaneWidth { BITS8, BITS16, BITS32 };

// vector_bytes - the size of a register; not for REFERENCE, which has none.
constexpr int32_t vector_bytes(InstructionSet set) {
  if (set == InstructionSet::AVX512 || set == InstructionSet::AVX512VBMI) return 64;
  return set == InstructionSet::AVX2 ? 32 : 16;
}

constexpr int32_t lane_bytes(LaneWidth width) {
  return width == LaneWidth::BITS8 ? 1 : width == LaneWidth::BITS16 ? 2 : 4;
}

// Entries of the score rows that lanes look their scores up in.
constexpr int32_t ROW_CODES = 32;

// is_usable - whether processor and operating system both support the set.
bool is_usable(InstructionSet set);

// best_instruction_set - the last usable one.
InstructionSet best_instruction_set();

const char* instruction_set_name(InstructionSet set);

}  // namespace zelvan
