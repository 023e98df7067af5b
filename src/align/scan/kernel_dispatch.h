// From a call to the recurrence that it asks for; included by every kernel object after its lanes.
#pragma once

#include "align/scan/kernel_frames.h"
#include "align/scan/kernel_local.h"

namespace zelvan {
namespace {

template <class V, ScoreSource SOURCE>
void run_lanes(const KernelCall& call) {
  switch (call.recurrence) {
    case Recurrence::LOCAL:
      call.affine ? run<LocalScan<V, true, SOURCE>>(call) : run<LocalScan<V, false, SOURCE>>(call);
      break;
    case Recurrence::TRANSLATED_TARGET:
      run<TranslatedTargetScan<V, SOURCE>>(call);
      break;
    case Recurrence::TRANSLATED_QUERY:
      call.affine ? run<TranslatedQueryScan<V, true, SOURCE>>(call)
                  : run<TranslatedQueryScan<V, false, SOURCE>>(call);
      break;
  }
}

// Narrow lanes of the translated searches are prepared: their scores come from a matrix.
template <class V>
void run_narrow(const KernelCall& call) {
  if (call.source == ScoreSource::PREPARED) {
    run_lanes<V, ScoreSource::PREPARED>(call);
  } else {
    call.affine ? run<LocalScan<V, true, ScoreSource::DIRECT>>(call)
                : run<LocalScan<V, false, ScoreSource::DIRECT>>(call);
  }
}

inline InstructionSet run_kernel(const KernelCall& call) {
  switch (call.width) {
    case LaneWidth::BITS8:
      if constexpr (COMPILED_SET != InstructionSet::PORTABLE) run_narrow<Vec8>(call);
      break;
    case LaneWidth::BITS16:
      run_narrow<Vec16>(call);
      break;
    case LaneWidth::BITS32:
      run_lanes<Vec32, ScoreSource::DIRECT>(call);
      break;
  }
  return COMPILED_SET;
}

}  // namespace
}  // namespace zelvan
