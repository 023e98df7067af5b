// What a kernel's registers hold. Included after vec_<set>.h; everything is local to the kernel object.
#pragma once

#include "align/simd/instruction_set.h"

namespace zelvan {
namespace {

constexpr int VECTOR_BYTES = vector_bytes(COMPILED_SET);
template <class V>
constexpr int LANES = VECTOR_BYTES / lane_bytes(V::WIDTH);

}  // namespace
}  // namespace zelvan
