// The vector kernels of protein against translated DNA. Plain data only, as in align/scan/scan_kernel.h.
#pragma once

#include "align/scan/scan_kernel.h"

namespace zelvan {

// Which sequence is the DNA.
enum class Translated { TARGET, QUERY };

// Blocks of a translated target are whole codons. Scores come from a matrix, so that narrow lanes prepare
// them.
constexpr Recurrence TRANSLATED_TARGET_RECURRENCE = {
    .columns = 6, .columns32 = 3, .state_vectors = 6, .direct_narrow = false};
constexpr Recurrence TRANSLATED_QUERY_RECURRENCE = {
    .columns = 2, .columns32 = 1, .state_vectors = 2, .direct_narrow = false};

// One entry per instruction set; no penalty may be negative, and a translated target has affine gaps. Returns
// the set that the object was compiled for.
InstructionSet run_frame_kernel_portable(Translated side, const KernelCall& call);
InstructionSet run_frame_kernel_sse41(Translated side, const KernelCall& call);
InstructionSet run_frame_kernel_avx2(Translated side, const KernelCall& call);
InstructionSet run_frame_kernel_avx512(Translated side, const KernelCall& call);
InstructionSet run_frame_kernel_neon(Translated side, const KernelCall& call);

}  // namespace zelvan
