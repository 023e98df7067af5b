#include "align/trace/traced_hits.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"
#include "support/settings.h"

namespace zelvan {

// What is kept while alignments are printed is what the profile gets without it: one code for every query position
// that was traced. A hit that is kept is not aligned again with the threshold it was kept with.
TEST(TracedHits, GiveTheProfileTheSameFromTheStore) {
  Random random(4);
  int32_t given_paths = 0;
  for (int32_t round = 0; round < 200; ++round) {
    Problem problem = random_problem(random, round % 2 == 0 ? 200 : 202, 40);
    Params& p = problem.p;
    set_keys(p, "MIN_LEN 4 PROBCUT2 1e-7 PROB_TYPE 0");
    LpfitData lpfit;  // significance exp(-score)
    lpfit.EXPORLIN = 1;
    lpfit.paramA[0] = lpfit.paramA[1] = lpfit.paramB[0] = lpfit.paramB[1] = 0.0;
    lpfit.Bmin = lpfit.Bmax = 1.0;
    Codes letters = encoded(random_letters(random, "ABCX", 60), problem.matrix);
    const SeqRec query = record_of(problem.query), target = record_of(letters);
    TracedHits store, empty;
    store.wanted = 1;
    const int32_t first = 0;
    ResultRec results;
    results.seqs = &target;
    results.order = &first;
    results.n = 1;
    const RankedScan scan = {query, problem.matrix, problem.table, lpfit, results};
    double significance = 0;
    for (const PathRec& path : align_hit(store, scan, 0, 6, &p)) {
      const bool long_enough = trace_hit_path(store, scan, path, significance, &p);
      EXPECT_EQ(long_enough, store.rows.length >= 4);
    }
    keep_hit(store);
    for (const int32_t threshold : {6, 12}) {
      const TracedHit& given = profile_hit(store, scan, 0, threshold, &p);
      const TracedHit& expected = profile_hit(empty, scan, 0, threshold, &p);
      EXPECT_EQ(&given == &store.kept[0], threshold == 6);
      EXPECT_EQ(given.codes, expected.codes);
      ASSERT_EQ(given.paths.size(), expected.paths.size());
      for (std::size_t k = 0; k < given.paths.size(); ++k) {
        const ProfilePath& taken = given.paths[k];
        EXPECT_EQ(fields(UTvector<PathRec>{taken.path}), fields(UTvector<PathRec>{expected.paths[k].path}));
        EXPECT_EQ(taken.length, taken.path.end_i - taken.path.start_i + 1);
        EXPECT_GT(taken.path.best, 16) << "exp(-16) > 1e-7 > exp(-17)";
        EXPECT_EQ(given.codes[taken.first], letters[static_cast<std::size_t>(taken.path.start_j)]);
        ++given_paths;
      }
    }
  }
  EXPECT_GT(given_paths, 100);
}

}  // namespace zelvan
