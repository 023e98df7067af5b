// The batch scan: the one door through which drivers score a whole database.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "align/scan/scan_engine.h"
#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/residue_reader.h"

namespace zelvan {

// scan_database - the score of every database sequence against the table, by the kernel of p->MODE:
//        200 swl with LD_PEN; 202 swli with LD_PEN and LI_PEN; 210 swlv; 212 swliv (penalties from the
//        table).
// In     qlen: stored query length, 2..MP_LEN; targets: codes, or read as codes
// Out    out_scores[0..targets.n-1], matrix units x PRECISION; -1 for a sequence without residues. Any other
//        mode leaves them as they are. A long scan tells on a terminal how far it is (scan_meter.h)
// Exact  each score is the integer that the scalar kernel gives
void scan_database(int32_t qlen, const ScanTargets& targets, const LookupTable& table,
                   const ScoreMatrix& matrix, int32_t* out_scores, const Params* p);

// scan_database_by - the same by the kernels of one instruction set, which must be usable, with lanes no
// narrower than `first`. Returns what was done; alphabets of more than 31 codes fall to REFERENCE.
ScanTally scan_database_by(InstructionSet set, LaneWidth first, int32_t qlen, const ScanTargets& targets,
                           const LookupTable& table, const ScoreMatrix& matrix, int32_t* out_scores,
                           const Params* p);

}  // namespace zelvan
