#include "seq/residue_kind.h"

#include <gtest/gtest.h>

#include "seq_data.h"

namespace zelvan {
namespace {

TEST(ResidueKind, IsToldOnlyWhereItIsCertain) {
  using enum ResidueKind;
  const std::string thirty = "ACGTNACGTNACGTNACGTNACGTNACGUU";
  const struct {
    std::vector<std::string> residues;
    ResidueKind kind;
  } cases[] = {
      {{thirty}, DNA},
      {{thirty.substr(1)}, UNCERTAIN},
      {{"", "A", thirty.substr(1)}, DNA},
      {{thirty + "RYS"}, DNA},
      {{thirty + "RYSW"}, UNCERTAIN},  // 30 of 34: below 90 %
      {{thirty + "E"}, UNCERTAIN},
      {{"MKLW"}, PROTEIN},
      {{"ACGTEFIL"}, UNCERTAIN},
      {{"ACGTEFILP"}, PROTEIN},
      {{"MKVMKVMKVMKVMKVMKVMKVMKVMKVMKVMKV"}, UNCERTAIN},  // M, K and V are ambiguous bases, too
      {{""}, UNCERTAIN},
      {{}, UNCERTAIN},
  };
  for (const auto& c : cases) {
    SeqStore store;
    std::vector<SeqRec> seqs;
    for (const std::string& residues : c.residues) seqs.push_back(stored(store, {"a", "-", residues}));
    EXPECT_EQ(residue_kind(seqs.data(), static_cast<int32_t>(seqs.size())), c.kind)
        << (c.residues.empty() ? "nothing" : c.residues.back());
  }
}

}  // namespace

}  // namespace zelvan
