// Alignments made by hand, for the tests of profile building.
#pragma once

#include <string>

#include "report/multiple_alignment.h"
#include "support/settings.h"
#include "support/small_alphabet.h"

namespace zelvan {

// The shipped settings, as far as profiles read them.
inline Params profile_params(int32_t mode = 202) {
  Params p = small_params(mode);
  set_keys(p,
           "PRECISION 100 LD_PEN 1 LI_PEN 11 PIDTHRESH 1 POSWGTFAC 1 PEN_FACTOR 1 PROFILE_WEIGHT_METHOD 2");
  return p;
}

// A query and the rows aligned to it.
struct Family {
  const ScoreMatrix& matrix;
  SeqRec query;
  AlignData aldat;

  Family(const ScoreMatrix& alphabet, const std::string& residues,
         std::initializer_list<const char*> rows = {})
      : matrix(alphabet), query(sequence_of(alphabet, residues)), aldat(initialise_aldat(query)) {
    for (const char* row : rows) add_row(row);
  }
  Family(const Family&) = delete;
  Family& operator=(const Family&) = delete;

  // Adds a row that covers query positions first .. first + text.size() - 1; '-' is a gap.
  void add_row(const std::string& text, int32_t first = 1) {
    AlignRow& row = addseq_to_aldat(aldat, query, residue_code(matrix, ' '));
    row.qstart = first;
    row.qend = first + static_cast<int32_t>(text.size()) - 1;
    for (std::size_t k = 0; k < text.size(); ++k) {
      row.aligned[k + static_cast<std::size_t>(first)] = residue_code(matrix, text[k] == '-' ? ' ' : text[k]);
    }
  }
};

}  // namespace zelvan
