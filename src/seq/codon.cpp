#include "seq/codon.h"

#include <algorithm>
#include <cstring>

#include "util/failure.h"
#include "util/line_reader.h"
#include "util/sorted_search.h"
#include "util/streams.h"
#include "util/text.h"
#include "util/text_start.h"

namespace zelvan {
namespace {

constexpr std::size_t CODON_LINE_SIZE = 10;
constexpr char BASES[] = "ACGT";
constexpr int32_t NO_BASE = 4;

int32_t base_number(int8_t letter) {
  switch (letter) {
    case 'A':
      return 0;
    case 'C':
      return 1;
    case 'G':
      return 2;
    case 'T':
      return 3;
    default:
      return NO_BASE;
  }
}

char complement_of(char base) {
  switch (base) {
    case 'A':
      return 'T';
    case 'C':
      return 'G';
    case 'G':
      return 'C';
    default:
      return 'A';
  }
}

// The residues of the 64 codons without ambiguity, -1 where the table has none; index 16 a + 4 b + c of the
// base numbers. Nearly all of a sequence is translated by it.
std::array<int32_t, NCODONS> plain_codons(const CodonTable& codons) {
  std::array<int32_t, NCODONS> residues{};
  for (std::size_t i = 0; i < residues.size(); ++i) {
    const char codon[4] = {BASES[i / 16], BASES[i / 4 % 4], BASES[i % 4], '\0'};
    residues[i] = findcodon(codons.data(), NCODONS, codon);
  }
  return residues;
}

// The base that stands for an IUB code, or a zero byte.
char base_of(char code) {
  switch (code) {
    case 'A':
    case 'D':
    case 'H':
    case 'N':
    case 'R':
    case 'V':
    case 'W':
      return 'A';
    case 'B':
    case 'C':
    case 'M':
    case 'S':
    case 'Y':
      return 'C';
    case 'G':
    case 'K':
      return 'G';
    case 'T':
      return 'T';
    default:
      return '\0';
  }
}

int32_t find_ambiguous(const CodonTable& codons, const int8_t* letters) {
  char codon[4] = {};
  std::memcpy(codon, letters, 3);
  const int32_t residue = findcodon(codons.data(), NCODONS, codon);
  if (residue >= 0) return residue;
  for (int32_t k = 0; k < 3; ++k) {
    codon[k] = base_of(codon[k]);
    if (codon[k] == '\0') return -1;
  }
  return findcodon(codons.data(), NCODONS, codon);
}

}  // namespace

CodonTable getcodon(const Params* p) {
  const UTstring path = UTcat({p->GENERAL_DIR, "/", p->CODON_FILE.name});
  FileRec file = UTfilemake(path.c_str(), "r", 1);
  if (file.stream == nullptr) {
    error("Cannot open file", 0);
    UTend_input(std_err, "File: %s\n", path.c_str());
  }
  CodonTable codons{};
  int32_t lines = 0;
  UTvector<char> line = UTlinebuffer(CODON_LINE_SIZE, "getcodon");
  while (UTgetline(file.stream, line)) {
    if (lines == 0) {
      UTrefuse_compressed(line.data(), std::strlen(line.data()), path.c_str(),
                          "> NEW_FILE, and -codon NEW_FILE");
      UTskip_mark(line);
    }
    if (lines < NCODONS) {
      Codon& entry = codons[static_cast<std::size_t>(lines)];
      if (std::sscanf(line.data(), "%9s %c", entry.codon, &entry.residue) != 2) entry = Codon{};
    }
    ++lines;
  }
  UTfileclose(file, 0);
  if (lines != NCODONS) {
    error("Codon table does not have 64 codons", 0);
    UTend_input(std_err, "Check file: %s\n", path.c_str());
  }
  return codons;
}

int32_t findcodon(const Codon* table, int32_t n, const char* codon) {
  const int32_t k = UTfind_sorted(n, [=](int32_t at) { return std::strcmp(codon, table[at].codon); });
  return k >= 0 ? int32_t{static_cast<unsigned char>(table[k].residue)} : -1;
}

char loose_ambiguity(char base) {
  const char resolved = base_of(base);
  if (resolved == '\0') {
    std::fprintf(std_err, "Error - character unrecognised: %c\n", base);
    error("Unrecognised ambiguity base code", 1);
  }
  return resolved;
}

UTvector<int8_t> dna_complement(int8_t* seq, int32_t len) {
  UTvector<int8_t> complement(static_cast<std::size_t>(len), 0);
  complement[0] = ' ';
  std::size_t to = 1;
  for (int32_t from = len - 2; from >= 1; --from) {
    if (base_number(seq[from]) == NO_BASE) {
      seq[from] = static_cast<int8_t>(loose_ambiguity(static_cast<char>(seq[from])));
    }
    complement[to++] = static_cast<int8_t>(complement_of(static_cast<char>(seq[from])));
  }
  return complement;
}

int32_t translate_dna(SeqRec& record, const CodonTable& codons) {
  const std::array<int32_t, NCODONS> plain = plain_codons(codons);
  for (int32_t i = 1; i <= record.len - 4; ++i) {
    int8_t* const letters = record.seq + i;
    const int32_t a = base_number(letters[0]);
    const int32_t b = base_number(letters[1]);
    const int32_t c = base_number(letters[2]);
    const bool is_plain = a != NO_BASE && b != NO_BASE && c != NO_BASE;
    const int32_t residue =
        is_plain ? plain[static_cast<std::size_t>(16 * a + 4 * b + c)] : find_ambiguous(codons, letters);
    if (residue < 0) return i;
    letters[0] = static_cast<int8_t>(residue);
  }
  return 0;
}

void end_untranslated(const SeqRec& record, int32_t at, const char* failure) {
  for (int32_t k = 0; k < 3; ++k) loose_ambiguity(static_cast<char>(record.seq[at + k]));
  error(failure, 1);
}

void setup_dnaseq(UTvector<int8_t>& out_dna, SeqRec& record, const CodonTable& codons,
                  int32_t complement_flag) {
  if (complement_flag != 0) {
    const UTvector<int8_t> complement = dna_complement(record.seq, record.len);
    std::copy(complement.begin(), complement.end(), record.seq);
  }
  out_dna.assign(record.seq, record.seq + record.len);
  if (const int32_t at = translate_dna(record, codons); at != 0) {
    end_untranslated(record, at, "Something weird happened when translating");
  }
}

}  // namespace zelvan
