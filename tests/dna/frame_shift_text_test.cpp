#include "dna/frame_shift_text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "dna/frame_scan.h"
#include "seq/codon.h"
#include "support/capture.h"
#include "support/settings.h"
#include "support/small_alphabet.h"

namespace {

// One DNA query against proteins, with the shipped matrix and code.
class FrameText : public testing::Test {
 protected:
  Params p = small_params(22);
  std::vector<std::pair<const char*, std::string>> proteins;
  UTvector<double> significance;

  FrameText() {
    set_keys(
        p,
        "PRECISION 100 STOP_WEIGHT -30 MATRIX_FILE BLOSUM62 MATRIX_FORMAT 1 CODON_FILE codo.tst LD_PEN 1 "
        "LI_PEN 12 FS_PEN 15 FSE_PEN 15 OUTPUT_LENGTH 60 MAX_AOUT 20 SHOW_TITLES_WIDTH 10 PROBCUT 10");
    p.MATRIX_DIR = ZELVAN_SOURCE_DIR "/data/matrices";
    p.GENERAL_DIR = ZELVAN_SOURCE_DIR "/data/codons";
  }

  void add(const char* id, const std::string& protein) { proteins.emplace_back(id, protein); }

  // The sections of all proteins, in the order in which they were added.
  std::string sections(const std::string& dna) {
    const ScoreMatrix& matrix = *getmat(&p);
    p.MATRIX_FILE.name = "BLOSUM62";
    UTvector<SeqRec> seqs;
    for (const auto& [id, protein] : proteins) seqs.push_back(sequence_of(matrix, protein, id, "a title"));
    SeqStore store;
    SeqRec query = store_sequence(store, "dna", 3, "", 0, dna.data(), static_cast<int32_t>(dna.size()));
    UTvector<int8_t> letters;
    setup_dnaseq(letters, query, getcodon(&p), p.COMPLEMENT_QUERY);
    seqtoi(query.seq, query.len, matrix);
    const LookupTable table = mlook(query.seq, query.len, matrix);
    UTvector<int32_t> scores(seqs.size());
    UTvector<int32_t> order;
    for (std::size_t k = seqs.size(); k-- > 0;) order.push_back(static_cast<int32_t>(k));
    ResultRec results;
    results.seqs = seqs.data();
    results.n = static_cast<int32_t>(seqs.size());
    scan_frames(query.len, results.seqs, results.n, table, scores.data(), &p);
    results.scores = scores.data();
    results.order = order.data();
    results.significance = significance.empty() ? nullptr : significance.data();
    return printed([&] { print_frame_alignments(query, letters, results, matrix, table, &p); });
  }
};

// M K W V T F, one base too many, I S L L W C H; two bases are ambiguous, three surround the gene.
constexpr const char* GENE = "CCATGAARTGGGTNACCTTCCATCTCTCTTCTGTGGTGTCATC";

// 80 for the thirteen residues, less 15 for the shift.
TEST_F(FrameText, ShowsResiduesCodonsAndShift) {
  add("prot", "GGMKWVTFISLLWCH");
  p.OUTPUT_LENGTH = 8;
  EXPECT_EQ(sections(GENE),
            "\n"
            "# Start_Alignments_Rank: 1\n"
            "# Query: dna Target: prot Number_of_Alignments: 1\n"
            "# Target_Title: a title   \n"
            "# N: 1 Raw_Score: 65 Query_Length: 43 Target_Length: 15 \n"
            "# Residues: 3-15 Nucleotides: 3-42 Identical: 13 Frame_Shifts: 1\n"
            "      3 MKWVTF I       9\n"
            "        ******^*\n"
            "      3 MKWVTF^I      24\n"
            "        AATGATCA\n"
            "        TAGTCT T\n"
            "        GRGNCC C\n"
            "\n"
            "     10 SLLWCH      15\n"
            "        ******\n"
            "     25 SLLWCH      42\n"
            "        TCCTTC\n"
            "        CTTGGA\n"
            "        TTGGTT\n"
            "\n"
            "# End_N: 1\n"
            "# End_Alignments_Rank: 1\n");
}

TEST_F(FrameText, ShowsWhatIsSpecial) {
  const struct {
    const char *dna, *protein;
    const char* settings;
    const char* shown;
  } cases[] = {
      // The other strand: nucleotides are numbered as in the file, downwards.
      {"GATGACACCACAGAAGAGAGATGGAAGGTAACCCATTTCATGG", "MKWVTFISLLWCH", "COMPLEMENT_QUERY 1",
       "# Residues: 1-13 Nucleotides: 41-2 Identical: 13 Frame_Shifts: 1\n"},
      {"GATGACACCACAGAAGAGAGATGGAAGGTAACCCATTTCATGG", "MKWVTFISLLWCH", "COMPLEMENT_QUERY 1",
       "     41 MKWVTF^ISLLWCH       2\n        AATGATCATCCTTC\n"},
      // Two bases too many are one shift.
      {"ATGAAATGGGTTACCTTCTTATCTCTCTTCTGTGGTGTCAT", "MKWVTFISLLWCH", "COMPLEMENT_QUERY 0",
       " Frame_Shifts: 1\n"},
      // A residue without a codon (D) and a codon without a residue (the first L); W and F only score above 0.
      {"ATGAAATGGGTTACCTTCTTCATCTCTCTTCTGTGGTGTCATTGGTGG", "MKWVTWDFISLWCHWW", "MODE 20 LD_PEN 3",
       "      1 MKWVTWDFIS LWCHWW      16\n"
       "        *****. *** ******\n"
       "      1 MKWVTF FISLLWCHWW      48\n"},
      // The last two positions spell the residues of their letters: A, with the two bases AC behind it.
      {"TGGTGGTGGTGGAC", "WWWWAC", "COMPLEMENT_QUERY 0", "Residues: 1-5 Nucleotides: 1-14"},
      {"TGGTGGTGGTGGAC", "WWWWAC", "COMPLEMENT_QUERY 0", "        TTTTA\n        GGGGC\n        GGGG \n"},
  };
  for (const auto& c : cases) {
    proteins = {{"prot", c.protein}};
    set_keys(p, "MODE 22 LD_PEN 1");
    set_keys(p, c.settings);
    const std::string text = sections(c.dna);
    EXPECT_EQ(count_of(text, c.shown), 1) << c.shown << text;
  }
}

TEST_F(FrameText, LeavesOutWhatIsTooShortTooWeakOrInsignificant) {
  add("one", "MKWVTFISLLWCH");
  add("two", "MKWVTF");
  add("three", "MKWV");
  const struct {
    const char* settings;
    UTvector<double> significance;
    const char* mark;
    int32_t expected;
  } cases[] = {
      {"MIN_LEN 1 MIN_ASCORE 0", {}, "# End_N: 1", 3},
      {"MIN_LEN 6 MIN_ASCORE 0", {}, "# End_N: 1", 2},
      {"MIN_LEN 6 MIN_ASCORE 0", {}, "Number_of_Alignments: 1", 3},
      {"MIN_LEN 1 MIN_ASCORE 36", {}, "# End_N: 1", 2},
      {"MIN_LEN 1 MIN_ASCORE 36", {}, "Number_of_Alignments: 0", 1},
      {"MIN_LEN 1 MIN_ASCORE 0", {1e-7, 3, 11}, "# End_N: 1", 2},
      {"MIN_LEN 1 MIN_ASCORE 0", {1e-7, 3, 11}, " Evalue: 1e-07\n# Residues", 1},
      {"FIT_TYPE 1", {1e-7, 3, 11}, " Pvalue: 3\n# Residues", 1},
  };
  for (const auto& c : cases) {
    set_keys(p, c.settings);
    significance = c.significance;
    const std::string text = sections(GENE);
    EXPECT_EQ(count_of(text, "# Start_Alignments_Rank: "), 3);
    EXPECT_EQ(count_of(text, "# End_Alignments_Rank: "), 3);
    EXPECT_EQ(count_of(text, c.mark), c.expected) << c.mark;
  }
}

TEST_F(FrameText, RefusesLinesWithoutColumns) {
  add("prot", "MKWVTF");
  p.OUTPUT_LENGTH = 0;
  EXPECT_EXIT(sections(GENE), testing::ExitedWithCode(255), "OUTPUT_LENGTH is 0");
}

}  // namespace
