#include "seq/codon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "seq_data.h"
#include "support/capture.h"

namespace zelvan {
namespace {

CodonTable load(const std::string& directory, const char* name) {
  Params p;
  p.GENERAL_DIR = directory.c_str();
  p.CODON_FILE.name = name;
  return getcodon(&p);
}

TEST(Getcodon, CountsLines) {
  const TemporaryDirectory directory;
  const std::string code = file_content(ZELVAN_SOURCE_DIR "/data/codons/codo.tst");
  for (const std::string& text : {code.substr(code.find('\n') + 1), code + "\n"}) {
    directory.file("codons", text);
    EXPECT_EXIT(load(directory.path, "codons"), testing::ExitedWithCode(255),
                "^Codon table does not have 64 codons: .*\nCheck file: .*/codons\n$");
  }
}

// The codes as textbooks print them, bases in the order ACGT and the last one running fastest.
TEST(SetupDnaseq, TranslatesInterleavedFramesByTheGeneticCode) {
  const std::string standard = "KNKNTTTTRSRSIIMIQHQHPPPPRRRRLLLLEDEDAAAAGGGGVVVV!Y!YSSSS!CWCLFLF";
  const std::string mitochondrial = "KNKNTTTT!S!SMIMIQHQHPPPPRRRRLLLLEDEDAAAAGGGGVVVV!Y!YSSSSWCWCLFLF";
  const std::string bases = "ACGT", letters = "ACGTRYMKSWBDHVN", meant = "ACGTACCGCACAAAA";
  std::mt19937 random(11);
  for (const auto& [name, code] : {std::pair("codo.tst", standard),
                                   {"bacterial.tst", standard},
                                   {"vertebrate_mitochondrial.tst", mitochondrial}}) {
    const CodonTable table = load(ZELVAN_SOURCE_DIR "/data/codons", name);
    for (const std::size_t length : {0, 1, 2, 3, 4, 9000}) {
      for (const int32_t complement : {0, 1}) {
        std::string dna(length, ' '), plain(length, ' ');
        for (std::size_t k = 0; k < length; ++k) {
          const std::size_t drawn = random() % (random() % 2 == 0 ? bases.size() : letters.size());
          dna[k] = letters[drawn];
          plain[k] = meant[drawn];
        }
        SeqStore store;
        SeqRec record = stored(store, {"dna", "-", dna});
        if (complement != 0) {  // ambiguities are resolved before they are turned
          std::reverse(plain.begin(), plain.end());
          for (char& base : plain) base = bases[3 - bases.find(base)];
          dna = plain;
        }
        std::string translated = dna;
        for (std::size_t k = 0; k + 2 < length; ++k) {
          translated[k] =
              code[16 * bases.find(plain[k]) + 4 * bases.find(plain[k + 1]) + bases.find(plain[k + 2])];
        }
        UTvector<int8_t> kept(3, 'z');
        setup_dnaseq(kept, record, table, complement);
        EXPECT_EQ(texts_of(record).residues, translated) << name;
        EXPECT_EQ(std::string(kept.begin(), kept.end()), " " + dna + '\0');
      }
    }
  }
}

}  // namespace
}  // namespace zelvan
