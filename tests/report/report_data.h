// A small alphabet and hits to report, for the tests of this folder.
#pragma once

#include "support/capture.h"
#include "support/settings.h"
#include "support/small_alphabet.h"

namespace zelvan {

inline const ScoreMatrix& report_matrix() {
  static const ScoreMatrix matrix = match_or_not("ARNDCX", 0, 0);
  return matrix;
}

inline SeqRec reported_sequence(const std::string& id, const std::string& title,
                                const std::string& residues) {
  return sequence_of(report_matrix(), residues, id, title);
}

}  // namespace zelvan
