// A register as lanes of 8, 16 or 32 bits. Included by a vec_<set>.h behind its `Register`; everything is local to
// the kernel object.
#pragma once

#include "align/scan/scan_kernel.h"

namespace zelvan {
namespace {

template <LaneWidth W>
struct Vec {
  static constexpr LaneWidth WIDTH = W;
  Register v;
};
using Vec8 = Vec<LaneWidth::BITS8>;
using Vec16 = Vec<LaneWidth::BITS16>;
using Vec32 = Vec<LaneWidth::BITS32>;

// The residues of some columns, made ready for look-ups in a score row.
template <class V, int COLUMNS>
struct Codes;

}  // namespace
}  // namespace zelvan
