// The vector kernels of protein against protein. Plain data only, as in scan_kernel.h.
#pragma once

#include "align/scan/scan_kernel.h"

namespace zelvan {

// A negative penalty would raise the score on the pads behind a sequence. Only lanes of 32 bits take one, and
// one column at a time they need no pads.
constexpr Recurrence LOCAL_RECURRENCE = {
    .columns = 4, .columns32 = 1, .state_vectors = 2, .direct_narrow = true};

// One entry per instruction set. Returns the set that the object was compiled for.
InstructionSet run_local_kernel_portable(const KernelCall& call);
InstructionSet run_local_kernel_sse41(const KernelCall& call);
InstructionSet run_local_kernel_avx2(const KernelCall& call);
InstructionSet run_local_kernel_avx512(const KernelCall& call);
InstructionSet run_local_kernel_avx512vbmi(const KernelCall& call);
InstructionSet run_local_kernel_neon(const KernelCall& call);

}  // namespace zelvan
