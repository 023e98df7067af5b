#include "seq/residue_kind.h"

#include <algorithm>
#include <cstring>

#include "driver/search_mode.h"
#include "util/streams.h"

namespace zelvan {
namespace {

constexpr char BASES[] = "ACGTUN";
constexpr char AMBIGUOUS_BASES[] = "RYSWKMBDHV";
constexpr int64_t FEWEST_BASES = 30;    // below, a peptide may be made of these letters by chance
constexpr int32_t SEQUENCES_SEEN = 10;  // of a database

void warn(const char* what, const char* name, ResidueKind found, bool reads_dna, const char* modes,
          const Params* p) {
  if (found != (reads_dna ? ResidueKind::PROTEIN : ResidueKind::DNA)) return;
  std::fprintf(std_err, "Warning: %s %s looks like %s, but mode %d reads %s there: %s\n", what, name,
               reads_dna ? "protein" : "DNA", p->MODE, reads_dna ? "DNA" : "protein", modes);
}

}  // namespace

ResidueKind residue_kind(const SeqRec* seqs, int32_t n) {
  int64_t letters = 0;
  int64_t bases = 0;
  int64_t others = 0;  // neither bases nor ambiguous ones
  for (int32_t k = 0; k < n; ++k) {
    for (int32_t i = 1; i <= std::min(seqs[k].len, MP_LEN) - 2; ++i) {
      const int8_t letter = seqs[k].seq[i];
      const bool base = std::strchr(BASES, letter) != nullptr;
      ++letters;
      bases += base ? 1 : 0;
      others += !base && std::strchr(AMBIGUOUS_BASES, letter) == nullptr ? 1 : 0;
    }
  }
  if (others == 0 && letters >= FEWEST_BASES && bases * 10 >= letters * 9) return ResidueKind::DNA;
  if (others > 0 && bases * 2 < letters) return ResidueKind::PROTEIN;
  return ResidueKind::UNCERTAIN;
}

void warn_of_query(const SeqRec& query, const Params* p) {
  const bool reads_dna = decode_mode(p->MODE).comparison == Comparison::TRANSLATED_QUERY;
  warn("query", query.id, residue_kind(&query, 1), reads_dna,
       reads_dna ? "search with protein in modes 200 and 202, or in 10 and 12 in a database of DNA"
                 : "search with DNA in modes 20 and 22",
       p);
}

void warn_of_database(const SeqRec* seqs, int32_t n, const Params* p) {
  const bool reads_dna = decode_mode(p->MODE).comparison == Comparison::TRANSLATED_TARGETS;
  warn("database",
       p->BDB_GIVEN != 0 && !reads_text_only(p->MODE) ? p->BDB_ROOT.c_str() : p->DB_FILE.name.c_str(),
       residue_kind(seqs, std::min(n, SEQUENCES_SEEN)), reads_dna,
       reads_dna ? "search proteins in modes 200 and 202, or in 20 and 22 with a query of DNA"
                 : "search DNA in modes 10 and 12",
       p);
}

}  // namespace zelvan
