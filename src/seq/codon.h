// Genetic codes and the translation of DNA in three interleaved reading frames.
#pragma once

#include <array>
#include <cstdint>

#include "driver/params.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

struct Codon {
  char codon[10];  // as in the file, at most 9 characters; only those of three letters can be found
  char residue;    // its amino acid; STOP_CHARACTER for a stop codon
};
constexpr int32_t NCODONS = 64;
using CodonTable = std::array<Codon, NCODONS>;

// getcodon - reads GENERAL_DIR/CODON_FILE: 64 lines "codon residue" in ascending order.
// Does   every line makes an entry; one without both words makes an entry that no codon matches. Lines of
//        more than 9 characters count as several
// Ends   when the file cannot be opened or has not 64 lines (status -1)
CodonTable getcodon(const Params* p);

// findcodon - the residue letter (0..255) of a zero-terminated codon, or -1.
// In     table[0..n-1], n >= 0, expected in ascending order of bytes; in another order codons are missed,
//        always the same ones, see UTfind_sorted
int32_t findcodon(const Codon* table, int32_t n, const char* codon);

// loose_ambiguity - the first base in alphabetical order that an IUB code (upper case) may stand for.
// Ends   on any other character, "U" included (status 0)
char loose_ambiguity(char base);

// dna_complement - the reverse complement of seq[1..len-2] as len bytes: blank at 0, zero byte at len-1.
// In     len >= 2. Ambiguity codes are replaced by their base in seq, too
// Ends   on letters that are no bases (status 0)
UTvector<int8_t> dna_complement(int8_t* seq, int32_t len);

// translate_dna - translates in place: position i = 1..len-4 becomes the residue of the codon that starts
// there. Positions i, i+3, i+6, ... are one reading frame; the last two positions keep their DNA letters.
// Does   a codon that is not in the table is looked up again with its ambiguity codes resolved
// Returns 0, or the first position whose codon has no residue even so; from there on the letters stay
int32_t translate_dna(SeqRec& record, const CodonTable& codons);

// end_untranslated - ends the run (status 0) over the codon at the position that translate_dna returned: by
// loose_ambiguity when one of its letters is no base, otherwise with the message `failure`.
void end_untranslated(const SeqRec& record, int32_t at, const char* failure);

// setup_dnaseq - translate_dna that keeps the nucleotides, of the reverse complement when the flag is set.
// The record's residues stay where they are.
// Out    out_dna[0..len-1]: the letters that were translated, as in a record (blank, bases, zero byte)
// Ends   when the sequence cannot be translated (status 0)
void setup_dnaseq(UTvector<int8_t>& out_dna, SeqRec& record, const CodonTable& codons,
                  int32_t complement_flag);

}  // namespace zelvan
