#if defined(__x86_64__)
#include "align/simd/vec_avx512.h"
// The recurrences need the lanes above.
#include "align/scan/kernel_dispatch.h"

namespace zelvan {

InstructionSet run_kernel_avx512(const KernelCall& call) {
  return run_kernel(call);
}

}  // namespace zelvan
#endif
