#include "seq/codon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "seq_data.h"
#include "support/capture.h"

namespace {

constexpr const char* SHIPPED = ZELVAN_SOURCE_DIR "/data/codons";

CodonTable load(const char* directory, const char* name) {
  Params p;
  p.GENERAL_DIR = directory;
  p.CODON_FILE.name = name;
  return getcodon(&p);
}

char residue_of(const CodonTable& table, const char* codon) {
  return static_cast<char>(findcodon(table.data(), NCODONS, codon));
}

SeqRec dna(SeqStore& store, const std::string& letters) {
  return store_sequence(store, "dna", 3, "-", 1, letters.data(), static_cast<int32_t>(letters.size()));
}

std::string letters_of(const UTvector<int8_t>& buffer) {
  return {buffer.begin(), buffer.end()};
}

TEST(Getcodon, ReadsTheShippedCodes) {
  // Codons of each residue, in the order of the letters: the degeneracy of the code.
  const std::string letters = "ACDEFGHIKLMNPQRSTVWY!";
  const struct {
    const char* file;
    UTvector<int32_t> degeneracy;
  } cases[] = {
      {"codo.tst", {4, 2, 2, 2, 2, 4, 2, 3, 2, 6, 1, 2, 4, 2, 6, 6, 4, 4, 1, 2, 3}},
      {"bacterial.tst", {4, 2, 2, 2, 2, 4, 2, 3, 2, 6, 1, 2, 4, 2, 6, 6, 4, 4, 1, 2, 3}},
      {"vertebrate_mitochondrial.tst", {4, 2, 2, 2, 2, 4, 2, 2, 2, 6, 2, 2, 4, 2, 4, 6, 4, 4, 2, 2, 4}}};
  for (const auto& c : cases) {
    const CodonTable table = load(SHIPPED, c.file);
    UTvector<int32_t> degeneracy;
    for (const char letter : letters) {
      degeneracy.push_back(static_cast<int32_t>(std::count_if(
          table.begin(), table.end(), [letter](const Codon& codon) { return codon.residue == letter; })));
    }
    EXPECT_EQ(degeneracy, c.degeneracy) << c.file;
    EXPECT_TRUE(std::is_sorted(table.begin(), table.end(), [](const Codon& a, const Codon& b) {
      return std::strcmp(a.codon, b.codon) < 0;
    })) << c.file;
    for (const Codon& codon : table) EXPECT_EQ(residue_of(table, codon.codon), codon.residue);
    EXPECT_EQ(residue_of(table, "ATG"), 'M');
    EXPECT_EQ(residue_of(table, "TGA"), c.file[0] == 'v' ? 'W' : '!');
  }
}

// 64 lines; each codon's residue is its own letter from "0" on.
std::string table_text(const char* line_end = "\n", int lines = 64) {
  std::string text;
  for (int i = 0; i < lines; ++i) {
    text += {"ACGT"[i / 16 % 4], "ACGT"[i / 4 % 4], "ACGT"[i % 4], ' ', static_cast<char>('0' + i)};
    text += line_end;
  }
  return text;
}

TEST(Getcodon, CountsLinesWhateverTheyHold) {
  const TemporaryDirectory directory;
  const std::string whole = table_text();
  const struct {
    const char* what;
    std::string text;
    bool accepted;
  } cases[] = {{"whole", whole, true},
               {"no line end at the end", whole.substr(0, whole.size() - 1), true},
               {"line ends of Windows", table_text("\r\n"), true},
               {"63 lines", table_text("\n", 63), false},
               {"65 lines", whole + "\n", false},
               {"blank line as the last", table_text("\n", 63) + "\n", true},
               {"overlong line as two", table_text("\n", 62) + "TTG 01234567\n", true},
               {"overlong line as one too many", table_text("\n", 63) + "TTT 01234567\n", false},
               {"empty", "", false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    directory.file("codons", c.text);
    if (c.accepted) {
      EXPECT_EQ(residue_of(load(directory.path.c_str(), "codons"), "AAC"), '1');
    } else {
      EXPECT_EXIT(load(directory.path.c_str(), "codons"), testing::ExitedWithCode(255),
                  "^Codon table does not have 64 codons: .*\nCheck file: .*/codons\n$");
    }
  }
  directory.file("codons", "\nAAC\n\nTTT x yz\n" + table_text("\n", 60));
  const CodonTable odd = load(directory.path.c_str(), "codons");
  EXPECT_STREQ(odd[0].codon, "");  // nothing to be found
  EXPECT_STREQ(odd[1].codon, "");
  EXPECT_EQ(odd[3].residue, 'x');
  EXPECT_EXIT(load(directory.path.c_str(), "missing"), testing::ExitedWithCode(255),
              "^Cannot open file: No such file or directory\nFile: .*/missing\n$");
}

TEST(Findcodon, SearchesByHalvingAndThenInOrder) {
  CodonTable table{};
  const auto set = [&table](std::size_t i, const char* codon, char residue) {
    std::strcpy(table[i].codon, codon);
    table[i].residue = residue;
  };
  // Out of order: the first step (entry 31) sends "CCC" upward, away from entry 3.
  for (std::size_t i = 0; i < table.size(); ++i) set(i, i < 32 ? "AAA" : "GGG", static_cast<char>(i + 1));
  set(3, "CCC", 'x');
  EXPECT_EQ(findcodon(table.data(), NCODONS, "CCC"), -1);
  EXPECT_EQ(findcodon(table.data(), 6, "CCC"), 'x');  // short enough to be searched from the start
  EXPECT_EQ(findcodon(table.data(), NCODONS, "AAA"), 32);
  EXPECT_EQ(findcodon(table.data(), NCODONS, "TTT"), -1);
  EXPECT_EQ(findcodon(table.data(), 0, "AAA"), -1);
  table[31].residue = '\xff';
  EXPECT_EQ(findcodon(table.data(), NCODONS, "AAA"), 255);  // a letter, not a failure
}

TEST(LooseAmbiguity, TakesTheFirstBase) {
  const std::string codes = "ADHNRVWBCMSYGKT";
  const std::string bases = "AAAAAAACCCCCGGT";
  for (std::size_t i = 0; i < codes.size(); ++i) EXPECT_EQ(loose_ambiguity(codes[i]), bases[i]) << codes[i];
  for (const char other : {'U', 'a', 'X', '-'}) {
    EXPECT_EXIT(loose_ambiguity(other), testing::ExitedWithCode(0),
                std::string("^Error - character unrecognised: ") + other +
                    "\nUnrecognised ambiguity base code: .*\n$");
  }
}

TEST(DnaComplement, ResolvesAmbiguitiesInTheSource) {
  SeqStore store;
  SeqRec record = dna(store, "ACGTN");
  EXPECT_EQ(letters_of(dna_complement(record.seq, record.len)), std::string(" TACGT\0", 7));
  EXPECT_EQ(texts_of(record).residues, "ACGTA");
  record = dna(store, "");
  EXPECT_EQ(letters_of(dna_complement(record.seq, record.len)), std::string(" \0", 2));
}

TEST(SetupDnaseq, TranslatesInterleavedFrames) {
  const CodonTable table = load(SHIPPED, "codo.tst");
  const struct {
    const char* letters;
    int32_t complement;
    const char* translated;
    const char* kept;
  } cases[] = {{"", 0, "", ""},
               {"AC", 0, "AC", "AC"},
               {"ATGAA", 0, "M!EAA", "ATGAA"},  // ATG, TGA, GAA and two letters
               {"ANANN", 0, "KKKNN", "ANANN"},  // AAA each time; the letters kept as they were
               {"TTCAT", 1, "M!EAA", "ATGAA"},
               {"TTCAN", 1, "L!EAA", "TTGAA"}};
  for (const auto& c : cases) {
    SeqStore store;
    SeqRec record = dna(store, c.letters);
    const int8_t* const place = record.seq;
    UTvector<int8_t> kept(3, 'z');
    setup_dnaseq(kept, record, table, c.complement);
    SCOPED_TRACE(c.letters);
    EXPECT_EQ(record.seq, place);
    EXPECT_EQ(texts_of(record).residues, c.translated);
    EXPECT_EQ(letters_of(kept), " " + std::string(c.kept) + '\0');
  }
}

TEST(TranslateDna, FollowsFindcodonWhateverTheOrderOfTheTable) {
  std::mt19937 random(11);
  CodonTable table = load(SHIPPED, "codo.tst");
  for (int round = 0; round < 50; ++round) {
    std::string letters;
    for (int i = 0; i < 300; ++i) letters += "ACGTACGTACGTRN"[random() % 14];
    SeqStore store;
    SeqRec record = dna(store, letters);
    std::string expected = letters;
    bool all_found = true;
    for (std::size_t i = 0; i + 2 < letters.size(); ++i) {
      std::string codon = letters.substr(i, 3);
      int32_t residue = findcodon(table.data(), NCODONS, codon.c_str());
      if (residue < 0) {
        for (char& base : codon) base = loose_ambiguity(base);
        residue = findcodon(table.data(), NCODONS, codon.c_str());
      }
      all_found = all_found && residue >= 0;
      expected[i] = static_cast<char>(residue);
    }
    if (all_found) {
      translate_dna(record, table, "");
      EXPECT_EQ(texts_of(record).residues, expected);
    } else {
      EXPECT_EXIT(translate_dna(record, table, "no codon"), testing::ExitedWithCode(0), "^no codon: .*\n$");
    }
    // Entries that hold ambiguity codes themselves, and in the end any order.
    std::strcpy(table[random() % 64].codon, round % 2 == 0 ? "RNA" : "ANN");
    std::sort(table.begin(), table.end(),
              [](const Codon& a, const Codon& b) { return std::strcmp(a.codon, b.codon) < 0; });
    if (round > 40) std::swap(table[random() % 64], table[random() % 64]);
  }
}

TEST(TranslateDna, EndsOnLettersThatAreNoBases) {
  const CodonTable table = load(SHIPPED, "codo.tst");
  SeqStore store;
  for (const char* letters : {"ACUG", "MKVLA"}) {
    SeqRec record = dna(store, letters);
    UTvector<int8_t> kept;
    EXPECT_EXIT(setup_dnaseq(kept, record, table, 0), testing::ExitedWithCode(0),
                "^Error - character unrecognised: [UL]\nUnrecognised ambiguity base code: .*\n$");
  }
  CodonTable empty{};
  SeqRec record = dna(store, "ACG");
  UTvector<int8_t> kept;
  EXPECT_EXIT(setup_dnaseq(kept, record, empty, 0), testing::ExitedWithCode(0),
              "^Something weird happened when translating: .*\n$");
}

}  // namespace
