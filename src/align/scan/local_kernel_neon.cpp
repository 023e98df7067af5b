#if defined(__aarch64__)
#include "align/simd/vec_neon.h"
// The recurrence needs the lanes above.
#include "align/scan/local_kernel_body.h"

namespace zelvan {

InstructionSet run_local_kernel_neon(const KernelCall& call) {
  return run_local_kernel(call);
}

}  // namespace zelvan
#endif
