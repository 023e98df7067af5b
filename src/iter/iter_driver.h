// The protein-against-protein search, iterated.
#pragma once

#include "driver/params.h"

namespace zelvan {

// swpp2_iter - modes 200, 202, 210 and 212: scan, fit, rank, list, align, build a profile, and again until
// the hit list is stable or NITER is reached.
void swpp2_iter(Params* p);

}  // namespace zelvan
