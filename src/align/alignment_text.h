// The alignment sections of the report.
#pragma once

#include <cstdint>
#include <cstdio>

#include "align/lookup.h"
#include "align/trace/traced_hits.h"
#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "stats/lpfit.h"

namespace zelvan {

// print_alignments_pp - realigns the best hits and writes one section for each to std_out, best first.
// Does   shows p->MAX_AOUT hits at most
// Out    traced: the hits shown, for build_profile
// Ends   when OUTPUT_LENGTH is below 1 and there is a hit to show (status -1); as trace_path, then behind the
//        alignments before it
void print_alignments_pp(const RankedScan& scan, TracedHits& traced, Params* p);

// printal2 - traces and writes the alignments of one hit, one after the other, numbered by their place in
// `paths`.
// Does   leaves out, with its number, a path shorter than MIN_LEN columns or, with DO_STATS 2, less
//        significant than PROBCUT
// In     paths: of align_hit for the latest hit, which `target` is
// Ends   as trace_path
void printal2(const RankedScan& scan, const SeqRec& target, const UTvector<PathRec>& paths,
              TracedHits& traced, const Params* p);

// print_section_start, print_section_end - the lines that open and close the section of one hit.
// In     rank from 1; npaths: the alignments found, printed or not
void print_section_start(const SeqRec& query, const SeqRec& target, int32_t rank, std::size_t npaths,
                         const Params* p);
void print_section_end(int32_t rank);

// require_output_length - ends the run when OUTPUT_LENGTH is below 1 (status -1).
void require_output_length(const Params* p);

// sdentq - the marker line of two rows of codes.
// Returns `length` characters: `identity` where the codes agree, `similarity` where they differ and score
//         above 0, else a blank
// Out    out_identical: the columns that agree
UTstring sdentq(const int8_t* query, const int8_t* target, int32_t length, const Table<int32_t>& pairscore,
                char identity, char similarity, int32_t& out_identical);

// printbid - a line of markers: columns from .. to-1.
void printbid(FILE* stream, const UTstring& markers, int32_t from, int32_t to);

// printbit - a line of letters with the sequence positions of its ends.
// Out    out_end: position of the last residue, start - 1 without one; blanks and "^" are no residues
void printbit(FILE* stream, int32_t start, int32_t& out_end, const char* letters, int32_t from, int32_t to);

}  // namespace zelvan
