#include "align/vec_portable.h"
// The recurrence needs the lanes above.
#include "align/kernel_body.h"

InstructionSet run_kernel_portable(const KernelCall& call) {
  return run_kernel(call);
}
