#if defined(__aarch64__)
#include "align/simd/vec_neon.h"
// The recurrence needs the lanes above.
#include "align/trace/flag_kernel_body.h"

namespace zelvan {

void run_flag_kernel_neon(const FlagBlock& block) {
  run_flag_kernel(block);
}

}  // namespace zelvan
#endif
