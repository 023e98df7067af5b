#include "seq/codon.h"

#include <gtest/gtest.h>

#include <random>

#include "seq_data.h"
#include "support/capture.h"

namespace zelvan {
namespace {

using testing::ExitedWithCode;

CodonTable load(const std::string& directory, const char* name) {
  Params p;
  p.GENERAL_DIR = directory.c_str();
  p.CODON_FILE.name = name;
  return getcodon(&p);
}

CodonTable shipped(const char* name = "codo.tst") {
  return load(ZELVAN_SOURCE_DIR "/data/codons", name);
}

std::string letters_of(const UTvector<int8_t>& buffer) {
  return {buffer.begin(), buffer.end()};
}

TEST(Getcodon, ReadsTheShippedCodes) {
  // Codons of each residue, in the order of the letters: the degeneracy of the code.
  const std::string letters = "ACDEFGHIKLMNPQRSTVWY!";
  for (const auto& [name, expected] :
       {std::pair("codo.tst", "422224232612426644123"), std::pair("bacterial.tst", "422224232612426644123"),
        std::pair("vertebrate_mitochondrial.tst", "422224222622424644224")}) {
    const CodonTable table = shipped(name);
    std::string degeneracy(letters.size(), '0');
    for (const Codon& codon : table) {
      ++degeneracy.at(letters.find(codon.residue));
      EXPECT_EQ(findcodon(table.data(), NCODONS, codon.codon), codon.residue);
    }
    EXPECT_EQ(degeneracy, expected) << name;
  }
}

TEST(Getcodon, CountsLines) {
  const TemporaryDirectory directory;
  const std::string code = file_content(ZELVAN_SOURCE_DIR "/data/codons/codo.tst");
  std::string windows;
  for (const char c : code) windows += c == '\n' ? "\r\n" : std::string(1, c);
  directory.file("codons", windows);
  EXPECT_EQ(findcodon(load(directory.path, "codons").data(), NCODONS, "ATG"), 'M');
  for (const std::string& text : {code.substr(code.find('\n') + 1), code + "\n"}) {
    directory.file("codons", text);
    EXPECT_EXIT(load(directory.path, "codons"), ExitedWithCode(255),
                "^Codon table does not have 64 codons: .*\nCheck file: .*/codons\n$");
  }
}

TEST(LooseAmbiguity, TakesTheFirstBase) {
  const std::string codes = "ADHNRVWBCMSYGKT";
  const std::string bases = "AAAAAAACCCCCGGT";
  for (std::size_t i = 0; i < codes.size(); ++i) EXPECT_EQ(loose_ambiguity(codes[i]), bases[i]) << codes[i];
}

TEST(SetupDnaseq, TranslatesInterleavedFrames) {
  const CodonTable table = shipped();
  const struct {
    const char* letters;
    int32_t complement;
    const char* translated;
    const char* kept;
  } cases[] = {{"AC", 0, "AC", "AC"},
               {"ATGAA", 0, "M!EAA", "ATGAA"},   // ATG, TGA, GAA and two letters
               {"TTCAN", 1, "L!EAA", "TTGAA"}};  // ambiguities are resolved before they are turned
  for (const auto& c : cases) {
    SeqStore store;
    SeqRec record = stored(store, {"dna", "-", c.letters});
    UTvector<int8_t> kept(3, 'z');
    setup_dnaseq(kept, record, table, c.complement);
    EXPECT_EQ(texts_of(record).residues, c.translated) << c.letters;
    EXPECT_EQ(letters_of(kept), " " + std::string(c.kept) + '\0') << c.letters;
  }
}

TEST(TranslateDna, FollowsFindcodonForEveryCodon) {
  const CodonTable table = shipped();
  std::mt19937 random(11);
  std::string letters(3000, 'A'), expected;
  for (char& letter : letters) letter = "ACGTACGTRN"[random() % 10];
  for (std::size_t i = 0; i + 2 < letters.size(); ++i) {
    std::string codon = letters.substr(i, 3);
    for (char& base : codon) base = loose_ambiguity(base);
    expected += static_cast<char>(findcodon(table.data(), NCODONS, codon.c_str()));
  }
  expected += letters.substr(letters.size() - 2);
  SeqStore store;
  SeqRec record = stored(store, {"dna", "-", letters});
  EXPECT_EQ(translate_dna(record, table), 0);
  EXPECT_EQ(texts_of(record).residues, expected);
}

}  // namespace
}  // namespace zelvan
