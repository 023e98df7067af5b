#if defined(__x86_64__)
#include "align/vec_sse41.h"
// The recurrences need the lanes above.
#include "align/kernel_dispatch.h"

InstructionSet run_kernel_sse41(const KernelCall& call) {
  return run_kernel(call);
}
#endif
