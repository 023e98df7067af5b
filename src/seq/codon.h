// Genetic codes and the translation of DNA in three interleaved reading frames.
#pragma once

#include <array>
#include <cstdint>

#include "driver/params.h"
#include "seq/sequence.h"
#include "util/memory.h"

struct Codon {
  char codon[8];
  char residue;
};
constexpr int32_t NCODONS = 64;
using CodonTable = std::array<Codon, NCODONS>;

// getcodon - reads GENERAL_DIR/CODON_FILE; ends with status -1 on a missing file or other than 64 lines.
CodonTable getcodon(const Params* p);

// findcodon - the residue letter of a codon by binary search with a linear finish, or -1; the table is
// expected in ascending order.
int32_t findcodon(const Codon* table, int32_t n, const char* codon);

// loose_ambiguity - one base for an IUB code; ends the run (status 0) on any other character.
char loose_ambiguity(char base);

// dna_complement - the reverse complement of residues 1..len-2, blank at 0, zero byte at len-1. Ambiguity
// codes are replaced in the source, too.
UTvector<int8_t> dna_complement(int8_t* seq, int32_t len);

// setup_dnaseq - translates a DNA sequence in place: position i = 1..len-4 becomes the residue of the codon
// that starts there; the last two positions keep their letters. Out    out_dna[0..len-1]: the letters that
// were translated (complemented when complement_flag is set) Ends   on letters that are no bases (status 0)
void setup_dnaseq(UTvector<int8_t>& out_dna, SeqRec& record, const CodonTable& codons,
                  int32_t complement_flag);
