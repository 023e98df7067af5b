// Finding sequences by identifier: the list to look for, the sorted database, the search.
#pragma once

#include <cstdint>
#include <cstdio>

#include "driver/params.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// ReadIdListFromScanFile - the identifiers of the first score list in the report of a search.
// Does   reads at most EXTRACT_SEQ lines of the list; the identifier is a line's fifth word when a line with
//        "# FIT" came before the list, otherwise its third
// Out    p->EXTRACT_SEQ: one less than the lines of the list when its end was among the lines read, otherwise
//        unchanged
// Returns all but the last of the identifiers read: the last one is dropped deliberately
// Ends   when the list does not start, does not end or has a line with too few words (status -1)
UTvector<UTstring> ReadIdListFromScanFile(FILE* stream, Params* p);

// shsort - puts seqs[0..n-1] into ascending byte order of their identifiers.
// Exact  equal identifiers in the order that the heap sort leaves, see UTindexx
void shsort(int32_t n, SeqRec* seqs);

// findid - a record with this identifier (of several the one that UTfind_sorted takes), or null.
// In     seqs[0..n-1] as shsort leaves them
const SeqRec* findid(const SeqRec* seqs, int32_t n, const char* id);

}  // namespace zelvan
