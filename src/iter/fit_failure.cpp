#include "iter/fit_failure.h"

#include <algorithm>

#include "stats/lpfit.h"

namespace zelvan {
namespace {

// The fit needs three ranges, each at least a tenth of the logarithm of the length wide: lengths within this
// factor, the exponential of two tenths, hardly fill them.
constexpr double FACTOR_OF_LENGTHS = 1.22;

// Residues of the sequence that a share of all is shorter than; there is one.
int32_t length_at(UTvector<int32_t>& lengths, double share) {
  const auto at = lengths.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(lengths.size()));
  std::nth_element(lengths.begin(), at, lengths.end());
  return *at;
}

const char* why_too_few_ranges(int32_t query_length, const SeqRec* seqs, int32_t n) {
  if (query_length == 0) return "The query has no residues: look at its file, and at QSEQ_FORMAT";
  UTvector<int32_t> lengths(static_cast<std::size_t>(n));
  std::transform(seqs, seqs + n, lengths.begin(), [](const SeqRec& s) { return residues(s); });
  const int32_t longest = length_at(lengths, 0.9);  // but for a few
  if (longest == 0) {
    return "Nearly all sequences of the database have no residues: look at its file, and at DB_FORMAT";
  }
  if (longest < FACTOR_OF_LENGTHS * length_at(lengths, 0.1)) {
    return "Nearly all sequences of the database have the same length, and the fit needs several: add "
           "sequences that are longer and shorter";
  }
  return "The database is too small for the fit: lower LPFIT_MINBUCK or search a larger one";
}

}  // namespace

const char* fit_remedy(int32_t code, int32_t query_length, const SeqRec* seqs, int32_t n) {
  switch (code) {
    case FIT_NO_HITS:
      return "The database has no sequence: is the file empty, or in another format than DB_FORMAT says?";
    case FIT_SCORES_TOO_WIDE:
      return "A few scores dwarf all others: use a matrix with scores of ordinary size";
    case FIT_TOO_FEW_RANGES:
      return why_too_few_ranges(query_length, seqs, n);
    case FIT_NO_TABLE:
    case FIT_NO_WORK_SPACE:
      return "There is no memory left for the fit: use a machine with more of it";
    default:
      return "The scores follow no extreme-value distribution: use a longer query of several kinds of "
             "residue, or higher gap penalties";
  }
}

}  // namespace zelvan
