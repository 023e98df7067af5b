#if defined(__x86_64__)
#include "align/simd/vec_avx2.h"
// The recurrence needs the lanes above.
#include "dna/frame_flag_kernel_body.h"

namespace zelvan {

void run_frame_flag_kernel_avx2(const FrameFlagBlock& block) {
  run_frame_flag_kernel(block);
}

}  // namespace zelvan
#endif
