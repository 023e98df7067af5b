// Traceback of the translated searches: the best local alignment of a protein and a translated DNA sequence,
// step by step. Only the path of the best score is traced; its score is the one that the scan gave.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "align/trace/move_flags.h"
#include "util/memory.h"

namespace zelvan {

// One column of an alignment, and what it takes of either sequence.
enum class FrameStep : uint8_t {
  MATCH,        // a residue opposite a codon
  NO_CODON,     // a residue opposite nothing
  NO_RESIDUE,   // a codon opposite nothing
  FRAME_SHIFT,  // one nucleotide, which belongs to no codon
};

// An alignment from its first step to its last. Its residues are first_row .. first_row + (steps MATCH and
// NO_CODON) - 1. Its nucleotides are the unbroken run from first_base on: three for every codon, one for
// every frame shift.
struct FramePath {
  int32_t score = -1;  // of the scan kernel, x PRECISION; -1: no cell
  int32_t first_row = 0;
  int32_t first_base = 0;
  UTvector<FrameStep> steps;  // empty when the score is 0 or less
};

// trace_frames - the best path of npswli2, or of npswl with li_pen equal to ld_pen.
// Does   of several best paths the one that ends first (rows before columns) is taken, gaps as the kernel
//        charged them. Where it could go on in more ways than one, codons come before frame shifts and these
//        before gaps. The kernels charge fs_pen for every nucleotide of a shift, so that FSE_PEN decides
//        among paths of the same score only: the nucleotides of a shift stay together, whatever else is
//        possible, unless going on is the more expensive kind (fse_pen above fs_pen); then they part where
//        they can
// In     table[c][j], j = 1..m-2; rows[1..n-2]; penalties as for the kernels
//        flags: working storage, one byte a cell, shaped here; handed from pair to pair to spare allocations
FramePath trace_frames(int32_t m, const int8_t* rows, int32_t n, const LookupTable& table, int32_t ld_pen,
                       int32_t li_pen, int32_t fs_pen, int32_t fse_pen, MoveFlags& flags);

}  // namespace zelvan
