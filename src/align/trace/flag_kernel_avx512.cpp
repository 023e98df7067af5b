#if defined(__x86_64__)
#define LANES 16
#include "align/trace/flag_kernel_body.h"

namespace zelvan {

void run_flag_kernel_avx512(const FlagBlock& block) {
  run_block(block);
}

}  // namespace zelvan
#endif
