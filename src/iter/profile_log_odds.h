// Profiles of the weight methods 1 and 2: log-odds of weighted residue frequencies.
//
// At every query position that at least one row covers, in this order:
// 1. Position-based weights of the query and of the rows that cover the position (row_weights.h) give the
//    observed frequencies f. Ambiguous letters count as the residues that they stand for, by background; X
//    and the like are no observation, nor is a gap: both only take weight away from what was observed.
//    So do rows that are too doubtful. A sequence with a row at or below a tenth of PROBCUT2 is sure; beside n
//    sure sequences a row counts whose significance is at most PROBCUT2 / (1 + n / 20), or a tenth of it.
//    The more relatives are sure, the less another one tells, while the risk that it is none stays the same,
//    and a stranger in the profile brings its family.
// 2. The score matrix turns f into the frequencies that it expects among relatives of what was observed,
//    g(c) = p(c) sum over b of f(b) exp(lambda s(b, c)), p being the background in the database and lambda
//    the scale of the matrix (residue_model.h).
// 3. Both are mixed, Q = (alpha f + beta g) / (alpha + beta), with beta = 10: with 7 more false positives
//    enter, 14 and 20 find as much.
//    Method 1: alpha is fixed at 2. Method 2: alpha is the number of independent
//    observations behind the column, less one: the mean number of distinct residues per column of the common
//    range, times the weight of the rows that do have a residue here. A family of near-identical sequences
//    then says hardly more than the query alone, and a diverse one overrules the matrix.
// 4. Half of p gives way to the profile's own composition, the mean of Q over all positions and 50 of the
//    usual composition: p' = (p + mean Q) / 2. Unrelated sequences of a like composition, such as membrane
//    proteins and coiled coils, would otherwise come into the profile and bring in their families.
// 5. The entry is ln(x) x PRECISION x POSWGTFAC with x = (Q / p')^(1 / lambda): log-odds in the units of the
//    score matrix, so that gap penalties keep their meaning from iteration to iteration. Rounded to the
//    nearest multiple of the largest number that divides half of PRECISION, all scores of the matrix and the
//    penalties: narrow lanes, which hold scores by their common divisor, then take profiles as they take the
//    matrix, and finer entries find no more. With penalties by position (210 and 212) to whole numbers.
//    Odds of 0, of scores far below any sensible one, have no logarithm: the matrix score stays.
//
// Positions without a row, and without any observed residue, keep the matrix scores of the query's residue.
// So do, at every position, X and all codes that stand for no residue. B, Z and J get the log-odds of the
// residues that they stand for, taken together.
//
// Gap rows start afresh from LD_PEN and LI_PEN. In the modes 210 and 212 the opening penalty of a position is
// lowered by the log-odds of a gap there against GAP_BACKGROUND, in the same units: positions where relatives
// have gaps become cheaper, conserved ones more expensive.
//
// Sources: Henikoff & Henikoff 1994, J. Mol. Biol. 243:574 (weights); Tatusov, Altschul & Koonin 1994,
// PNAS 91:12091 (pseudocounts from the target frequencies of a matrix); Altschul et al. 1997, Nucleic Acids
// Res. 25:3389 (their weight by distinct residues).
#pragma once

#include <cstdint>

#include "align/lookup.h"
#include "driver/params.h"
#include "report/multiple_alignment.h"
#include "seq/matrix.h"

namespace zelvan {

// calc_profile2 - rewrites the table from the rows, as told above; what it held before does not matter.
// In     aldat.query: the encoded query, which the table belongs to
// Ends   when the identity filter switches off every row of a position (status 1), when an entry does not fit
//        32 bits (status -1)
void calc_profile2(const ScoreMatrix& matrix, LookupTable& table, const AlignData& aldat, const Params* p);

}  // namespace zelvan
