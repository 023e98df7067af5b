// The batch scan of the translated searches: the one door through which drivers score a whole database with
// frame shifts.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "align/scan/scan_engine.h"
#include "driver/params.h"
#include "seq/residue_reader.h"

namespace zelvan {

// scan_frames - the score of every database sequence against the table, by the kernel of p->MODE with LD_PEN,
//        LI_PEN and FS_PEN: nswli for the modes 10 and 12, npswl for 20, npswli2 for 22.
// In     qlen: stored query length, 2..MP_LEN
//        in the modes 10 and 12 the codes are those of the translation
// Out    out_scores[0..targets.n-1], matrix units x PRECISION; -1 where no cell is computed. Any other mode
//        leaves them as they are. A long scan tells on a terminal how far it is (scan_meter.h)
// Exact  each score is the integer that the scalar kernel gives
void scan_frames(int32_t qlen, const ScanTargets& targets, const LookupTable& table, int32_t* out_scores,
                 const Params* p);

// scan_frames_by - the same by the kernels of one instruction set, which must be usable, with lanes no
// narrower than `first`. Returns what was done; negative penalties and alphabets of more than 31 codes fall
// to REFERENCE.
ScanTally scan_frames_by(InstructionSet set, LaneWidth first, int32_t qlen, const ScanTargets& targets,
                         const LookupTable& table, int32_t* out_scores, const Params* p);

}  // namespace zelvan
