// The vector scan behind scan_database: one instruction set, lanes as narrow as the scores allow, sequences
// whose lanes overflow repeated with wider ones.
#pragma once

#include <cstdint>

#include "align/scan/lane_table.h"
#include "align/scan/scan_kernel.h"
#include "align/scan/scan_meter.h"
#include "align/simd/instruction_set.h"
#include "seq/residue_reader.h"

namespace zelvan {

// What a scan did, for tests and benchmarks.
struct ScanTally {
  InstructionSet set = InstructionSet::REFERENCE;  // as the kernel object itself tells
  int64_t sequences[3] = {};                       // finished per LaneWidth
  int64_t saturated[2] = {};                       // handed on by BITS8 and BITS16
};

// Runs the kernel object of an instruction set; each family of recurrences has one such routine.
using RunKernel = InstructionSet (*)(InstructionSet set, const KernelCall& call);

// scan_sequences - the score of every sequence, as the scalar kernels give it.
// In     scores.table->rows < ROW_CODES, scores.positions >= 1
//        set: usable, not REFERENCE
//        first: the narrowest lanes to try
//        run_kernel: of the family of scores.recurrence
// Out    out_scores[0..targets.n-1]; -1 for a sequence without residues
//        meter: told of every sequence that ends
ScanTally scan_sequences(const ScanScores& scores, const ScanTargets& targets, int32_t* out_scores,
                         InstructionSet set, LaneWidth first, RunKernel run_kernel, ScanMeter& meter);

}  // namespace zelvan
