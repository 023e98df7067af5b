#if defined(__x86_64__)
#include "align/simd/vec_avx512.h"
// The recurrences need the lanes above.
#include "dna/frame_kernel_body.h"

namespace zelvan {

InstructionSet run_frame_kernel_avx512(Translated side, const KernelCall& call) {
  return run_frame_kernel(side, call);
}

}  // namespace zelvan
#endif
