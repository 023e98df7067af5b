// Protein against DNA, translated in three reading frames with frame shifts.
#pragma once

#include "driver/params.h"

namespace zelvan {

// swipd - mode 10: protein query, DNA database (text); "score identifier" for every sequence, in file order.
// Does   neither gap defaults nor MAX_NSEQ nor PRECISION apply: penalties are those configured, scores are
//        divided by 100. Batches of a few million bases are held at a time; a fault of the file, or of a
//        sequence in it, ends the run behind the lines of all sequences before it
void swipd(Params* p);

// swaipd2 - mode 12: protein query, DNA database, affine gaps.
// swadp - mode 20: DNA query, protein database, linear gaps. swaidp2 - mode 22: the same, affine gaps.
// Does   score list, with DO_STATS 1 ranked by the length-binned statistics, otherwise in backward order of
//        the database; alignments of the best hits (modes 20 and 22: as many as are listed with DO_STATS 1
//        and APRINT_TO_THRESHOLD 1, otherwise the MAX_AOUT best); extraction (mode 12: translated letters);
//        times. COMPLEMENT_QUERY turns the DNA side to its other strand, in mode 12 every database sequence.
//        Fewer sequences than MIN_NSTATS switch the statistics off
// Ends   on every fault of the files, on a DNA database stored as codes, when neither MIN_SCORE nor MAX_NOUT
//        limits the list (both -1) and when PRECISION is 0 (status -1); on letters that are no bases
//        (status 0)
void swaipd2(Params* p);
void swadp(Params* p);
void swaidp2(Params* p);

}  // namespace zelvan
