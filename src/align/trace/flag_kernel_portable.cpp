#define LANES 4
#include "align/trace/flag_kernel_body.h"

namespace zelvan {

void run_flag_kernel_portable(const FlagBlock& block) {
  run_block(block);
}

}  // namespace zelvan
