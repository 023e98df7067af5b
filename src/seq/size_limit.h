// How much of a database 32-bit numbers can address.
#pragma once

#include <cstdint>

namespace zelvan {

// most_characters - the most bytes of identifiers, titles and residues that one binary database holds, and
// the most residues of a text database: 2^31 - 1. It has a source file of its own: test programs are linked
// with another one, which lets small inputs cross the limit.
int64_t most_characters();

}  // namespace zelvan
