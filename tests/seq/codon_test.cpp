#include "seq/codon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "seq_data.h"
#include "support/capture.h"

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

// 64 lines; each codon's residue is its own letter from "0" on.
std::string table_text(int lines, const char* line_end = "\n") {
  std::string text;
  for (int i = 0; i < lines; ++i) {
    text += {"ACGT"[i / 16 % 4], "ACGT"[i / 4 % 4], "ACGT"[i % 4], ' ', static_cast<char>('0' + i)};
    text += line_end;
  }
  return text;
}

TEST(Getcodon, CountsLinesWhateverTheyHold) {
  const TemporaryDirectory directory;
  // The last line makes two of ten characters.
  for (const std::string& text : {table_text(64, "\r\n"), table_text(62) + "TTG 01234567\n"}) {
    directory.file("codons", text);
    EXPECT_EQ(findcodon(load(directory.path, "codons").data(), NCODONS, "AAC"), '1') << text;
  }
  for (const std::string& text : {table_text(63), table_text(64) + "\n"}) {
    directory.file("codons", text);
    EXPECT_EXIT(load(directory.path, "codons"), ExitedWithCode(255),
                "^Codon table does not have 64 codons: .*\nCheck file: .*/codons\n$");
  }
}

TEST(Findcodon, SearchesByHalvingAndThenInOrder) {
  CodonTable table{};
  // Out of order: the first step (entry 31) sends "CCC" upward, away from entry 3.
  for (std::size_t i = 0; i < table.size(); ++i) {
    std::strcpy(table[i].codon, i == 3 ? "CCC" : i < 32 ? "AAA" : "GGG");
    table[i].residue = static_cast<char>(i + 1);
  }
  EXPECT_EQ(findcodon(table.data(), NCODONS, "CCC"), -1);
  EXPECT_EQ(findcodon(table.data(), 6, "CCC"), 4) << "short enough to be searched from the start";
  EXPECT_EQ(findcodon(table.data(), NCODONS, "AAA"), 32);
  table[31].residue = '\xff';
  EXPECT_EQ(findcodon(table.data(), NCODONS, "AAA"), 255) << "a letter, not a failure";
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

// A table may list codons with ambiguity codes; they take the entry of TTT here, which no sequence has.
TEST(TranslateDna, FollowsFindcodonForEveryCodon) {
  std::mt19937 random(11);
  for (const char* entry : {"TTT", "RNA", "ANN"}) {
    CodonTable table = shipped();
    std::strcpy(table.back().codon, entry);
    std::sort(table.begin(), table.end(),
              [](const Codon& a, const Codon& b) { return std::strcmp(a.codon, b.codon) < 0; });
    for (int round = 0; round < 50; ++round) {
      std::string letters(100, 'A');
      for (char& letter : letters) letter = "ACGACGTRN"[random() % 9];
      if (letters.find("TTT") != std::string::npos) continue;
      std::string expected = letters;
      for (std::size_t i = 0; i + 2 < letters.size(); ++i) {
        std::string codon = letters.substr(i, 3);
        int32_t residue = findcodon(table.data(), NCODONS, codon.c_str());
        if (residue < 0) {
          for (char& base : codon) base = loose_ambiguity(base);
          residue = findcodon(table.data(), NCODONS, codon.c_str());
        }
        expected[i] = static_cast<char>(residue);
      }
      SeqStore store;
      SeqRec record = stored(store, {"dna", "-", letters});
      EXPECT_EQ(translate_dna(record, table), 0);
      EXPECT_EQ(texts_of(record).residues, expected);
    }
  }
}

}  // namespace
