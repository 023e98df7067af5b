#include "align/alignment_text.h"

#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/settings.h"
#include "support/small_alphabet.h"

namespace zelvan {
namespace {

// A query and its hits, ranked as given, best first. Significance is exp(-score / 10).
struct Report {
  ScoreMatrix matrix = small_matrix("ABX", [](int32_t a, int32_t b) {
    if (a == 2 || b == 2) return -40;
    return a == b ? 50 : 10;
  });
  Params p = small_params(202);
  LpfitData lpfit;
  SeqRec query;
  std::vector<SeqRec> hits;
  std::vector<int32_t> scores;

  explicit Report(const std::string& letters) : query(sequence_of(matrix, letters, "query")) {
    set_keys(
        p,
        "PRECISION 10 LD_PEN 1 LI_PEN 2 TOP_ONLY 1 DO_STATS 2 PROB_TYPE 0 PROBCUT 1 MIN_LEN 1 MAX_AOUT 10 "
        "OUTPUT_LENGTH 4 SHOW_TITLES_WIDTH 6 MIN_SCORE 7");
    p.DB_QUERY_RATIO = 2;
    lpfit.EXPORLIN = 1;
    lpfit.paramA[0] = lpfit.paramA[1] = lpfit.paramB[0] = lpfit.paramB[1] = 0;
    lpfit.Bmin = lpfit.Bmax = 10;
  }

  void hit(const std::string& id, const std::string& title, const std::string& letters, int32_t score) {
    hits.push_back(sequence_of(matrix, letters, id, title));
    scores.push_back(score);
  }

  void write() {
    const LookupTable table = mlookgap(query.seq, query.len, matrix, p.LD_PEN, p.LI_PEN, &p);
    std::vector<int32_t> order;
    for (std::size_t k = hits.size(); k > 0; --k) order.push_back(static_cast<int32_t>(k - 1));
    TracedHits traced;
    ResultRec results;
    results.seqs = hits.data();
    results.scores = scores.data();
    results.order = order.data();
    results.n = static_cast<int32_t>(order.size());
    print_alignments_pp({query, matrix, table, lpfit, results}, traced, &p);
  }
  std::string print() {
    return printed([&] { write(); });
  }
};

// The characters that follow a label, everywhere in a text.
std::string after(const std::string& label, const std::string& text) {
  std::string characters;
  for (std::size_t at = text.find(label); at != text.npos; at = text.find(label, at + 1)) {
    characters += text[at + label.size()];
  }
  return characters;
}

}  // namespace

// Whole sections stand in the manual, whose examples are run; here a block without query residues, which ends
// before it starts.
TEST(AlignmentText, ABlockMayHoldOneSequenceOnly) {
  Report report("AABB");
  report.p.OUTPUT_LENGTH = 2;
  report.hit("hit", "t", "AAXXBB", 170);
  EXPECT_EQ(count_of(report.print(),
                     "\n          \n"
                     "      3          2\n"
                     "      3 XX       4\n"),
            1);
  EXPECT_EQ(report.p.MIN_SCORE, 70) << "is put back";
}

// Gaps that add to the score lead a trace past the start of its path and off the cells.
TEST(AlignmentText, ATraceThatFailsShowsWhatCameBeforeIt) {
  Report report("BAXAX");
  set_keys(report.p, "MODE 200 LD_PEN -1.1 TOP_ONLY 0");
  report.hit("hit", "t", "AAXAB", 100);
  const auto write = [&] {
    std_out = stderr;
    report.write();
  };
  EXPECT_EXIT(write(), testing::ExitedWithCode(255),
              "^\n# Start_Alignments_Rank: 1\n.*# N: 1 .*# End_N: 1\nDisaster in aliseq\n$");
}

TEST(AlignmentText, FiguresLineFollowsStatisticsAndLogScores) {
  Report report("AABAA");
  report.hit("hit", "a long title", "AABXAA", 230);
  for (const auto& [settings, line] :
       {std::pair("DO_STATS 2 PROB_TYPE 0 LOG_SCORES 0", "Target_Length: 6 Pvalue: 0.100259\n        ***"),
        {"DO_STATS 2 PROB_TYPE 1 LOG_SCORES 0", "Target_Length: 6 Evalue: 0.200518\n        ***"},
        {"DO_STATS 0 PROB_TYPE 0 LOG_SCORES 0", "Target_Length: 6         ***"},
        // 23 x 1.609 / 1.792 = 20.7
        {"DO_STATS 2 PROB_TYPE 0 LOG_SCORES 1", "Target_Length: 6 ln()_Score: 20\n        ***"}}) {
    set_keys(report.p, settings);
    EXPECT_EQ(count_of(report.print(), line), 1) << settings << report.print();
  }
}

TEST(AlignmentText, ThresholdsOfHitsAndOfPaths) {
  Report one("AAAA"), three("AAAA");
  // AAA at the target's start aligns with either end of the query, 150 each; ABBA scores 120 in four columns.
  // Significances are exp(-15) and exp(-12).
  one.lpfit.Bmin = one.lpfit.Bmax = 1;
  one.hit("hit", "t", "AAAXXXXXXXXXABBA", 150);
  for (const char* id : {"one", "two", "three"}) three.hit(id, "t", "AAA", 150);
  const struct {
    Report& report;
    const char* settings;
    std::string found, shown;  // how many for each hit, and their numbers
  } cases[] = {
      // Paths that are left out keep their numbers.
      {one, "TOP_ONLY 0 MIN_ASCORE 11", "3", "123"},
      {one, "MIN_LEN 4", "3", "3"},
      {one, "MIN_LEN 1 PROBCUT 1e-6", "3", "12"},
      {one, "PROBCUT nan", "3", ""},
      {one, "DO_STATS 0", "3", "123"},
      // The lowered threshold of DO_STATS 2 holds for the first hit alone.
      {three, "TOP_ONLY 0 DO_STATS 2 MIN_ASCORE 18", "200", "12"},
      {three, "DO_STATS 0", "000", ""},
      // ln 4 / ln 3 divides the threshold: 190 becomes 150; (150 - 50) / 1.26 = 79 lets shorter paths join.
      {three, "MIN_ASCORE 19 LOG_SCORES 2", "222", "121212"},
      {three, "TOP_ONLY 1", "444", "123412341234"},
      {three, "MAX_AOUT 2", "44", "12341234"},
      {three, "MAX_AOUT -5", "", ""},
  };
  for (const auto& c : cases) {
    set_keys(c.report.p, c.settings);
    const std::string text = c.report.print();
    EXPECT_EQ(after("Number_of_Alignments: ", text), c.found) << c.settings;
    EXPECT_EQ(after("# N: ", text), c.shown) << c.settings;
  }
}

}  // namespace zelvan
