#if defined(__aarch64__)
#include "align/simd/vec_neon.h"
// The recurrence needs the lanes above.
#include "dna/frame_flag_kernel_body.h"

namespace zelvan {

void run_frame_flag_kernel_neon(const FrameFlagBlock& block) {
  run_frame_flag_kernel(block);
}

}  // namespace zelvan
#endif
