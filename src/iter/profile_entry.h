// Entries of a profile: real numbers that become integers of 32 bits.
#pragma once

#include <cstdint>

#include "driver/params.h"

namespace zelvan {

// profile_entry - a value without its fraction.
// In     i: query position that it belongs to; keys: what to reduce when it is too large, for the message
// Ends   when it is NaN or not within -(2^31 - 1) .. 2^31 - 1 (status -1)
int32_t profile_entry(double value, int32_t i, const char* keys, const Params* p);

}  // namespace zelvan
