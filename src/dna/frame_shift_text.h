// The alignment sections of the translated searches, framed as those of the protein searches.
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "driver/params.h"
#include "report/score_list.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// print_frame_alignments - realigns the best hits of a DNA query with their proteins and writes one section
// for each to std_out, best first, at most p->MAX_AOUT of them.
// Does   a hit has at most one alignment, of the score that the scan gave. It is counted in the section's
//        heading when its score is above 0 and at least MIN_ASCORE; it is left out when it has fewer columns
//        than MIN_LEN or, with significances, one above PROBCUT.
//        Each block: protein (numbered in residues), markers ("*" identical, "." score above 0), translation
//        (numbered in nucleotides of the strand in the file, that is downwards when it was complemented) and
//        below every residue its codon, first base on top. A frame shift is a column of its own for every
//        nucleotide that it passes over, marked FGAP_CHARACTER; a gap is GAP_CHARACTER
// In     query: translated and encoded; dna: its letters, as setup_dnaseq returned them
//        results: seqs, scores, order, n; significance, null where there are no statistics
//        p->MODE 20: linear gaps; 22: affine gaps
// Ends   when OUTPUT_LENGTH is below 1 and there is a hit to show (status -1)
void print_frame_alignments(const SeqRec& query, const UTvector<int8_t>& dna, const ResultRec& results,
                            const ScoreMatrix& matrix, const LookupTable& table, const Params* p);

}  // namespace zelvan
