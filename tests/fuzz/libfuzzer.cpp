// The entry of a libFuzzer program; FUZZ_TARGET is the name of its target.
#include "harness.h"

namespace zelvan {

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static const FuzzTarget target = find_target(FUZZ_TARGET);
  run_target(target, {reinterpret_cast<const char*>(data), size});
  return 0;
}

}  // namespace zelvan
