#include "align/simd/vec_portable.h"
// The recurrences need the lanes above.
#include "align/scan/kernel_dispatch.h"

namespace zelvan {

InstructionSet run_kernel_portable(const KernelCall& call) {
  return run_kernel(call);
}

}  // namespace zelvan
