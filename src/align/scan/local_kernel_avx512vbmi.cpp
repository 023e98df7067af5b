#if defined(__x86_64__)
#include "align/simd/vec_avx512.h"
// The recurrence needs the lanes above.
#include "align/scan/local_kernel_body.h"

namespace zelvan {

InstructionSet run_local_kernel_avx512vbmi(const KernelCall& call) {
  return run_local_kernel(call);
}

}  // namespace zelvan
#endif
