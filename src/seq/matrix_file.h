// The two layouts of a matrix file.
#pragma once

#include "driver/params.h"
#include "seq/matrix.h"

namespace zelvan {

// getmat_pir, getmat_ncbi - read MATRIX_DIR/MATRIX_FILE in the plain ("PIR") or the NCBI layout.
// In     plain layout: title line, letter line, then the full square of scores, row after row, free of line
//        breaks. NCBI layout: a "#" line first, a header line of letters that begins with a blank ("*" is no
//        letter there), one row per letter whose first token is skipped and whose last ones ("*") are ignored
// Out    title, indx, xindex, inlen, pairscore; the special rows and columns are zero, the other fields
//        unchanged. p->MATRIX_FILE: directory and name joined, closed
// Ends   missing lines or scores, a letter list without "X" or with bytes that are not printable ASCII, more
//        letters than codes, scores that do not fit 32 bits x PRECISION (status -1)
void getmat_pir(ScoreMatrix& out_matrix, Params* p);
void getmat_ncbi(ScoreMatrix& out_matrix, Params* p);

}  // namespace zelvan
