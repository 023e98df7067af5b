#include "align/simd/vec_portable.h"
// The recurrences need the lanes above.
#include "dna/frame_kernel_body.h"

namespace zelvan {

InstructionSet run_frame_kernel_portable(Translated side, const KernelCall& call) {
  return run_frame_kernel(side, call);
}

}  // namespace zelvan
