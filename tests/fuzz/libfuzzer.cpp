// The entry of a libFuzzer program; FUZZ_TARGET is the function of its target.
#include "harness.h"
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  begin_case();
  FUZZ_TARGET({data, size});
  end_case();
  return 0;
}
