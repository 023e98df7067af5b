#include "align/trace/traced_hits.h"

#include <gtest/gtest.h>

#include "align/small_problem.h"

namespace zelvan {
namespace {

SeqRec record(Codes& codes) {
  SeqRec seq;
  seq.seq = codes.data();
  seq.len = stored_length(codes);
  return seq;
}

}  // namespace

// Asked in any order, with thresholds that change or stay, the store gives what an empty one gives; a rank that is
// wanted again is aligned once for each threshold that follows another.
TEST(TracedHits, GiveTheSameFromTheStore) {
  Random random(4);
  for (int32_t round = 0; round < 40; ++round) {
    Problem problem = random_problem(random, round % 2 == 0 ? 200 : 202, 40);
    const SeqRec query = record(problem.query);
    std::vector<Codes> targets;
    for (int32_t k = 0; k < 6; ++k)
      targets.push_back(encoded(random_letters(random, "ABCX", 60), problem.matrix));
    TracedHits store;
    store.wanted = 4;
    for (int32_t asked = 0; asked < 30; ++asked) {
      const int32_t rank = uniform(random, 0, 5);
      problem.p.MIN_SCORE = uniform(random, 6, 8);
      const SeqRec target = record(targets[static_cast<std::size_t>(rank)]);
      TracedHits empty;
      const auto& expected =
          traced_paths(empty, rank, query, target, problem.table, problem.matrix, &problem.p);
      const auto& given = traced_paths(store, rank, query, target, problem.table, problem.matrix, &problem.p);
      ASSERT_EQ(given.size(), expected.size());
      for (std::size_t k = 0; k < given.size(); ++k) {
        ASSERT_EQ(fields(UTvector<PathRec>{given[k].path}), fields(UTvector<PathRec>{expected[k].path}));
        ASSERT_EQ(given[k].rows.query, expected[k].rows.query);
        ASSERT_EQ(given[k].rows.target, expected[k].rows.target);
      }
      const bool is_kept = rank < store.wanted;
      EXPECT_EQ(&given == &store.latest.paths, !is_kept);
      if (is_kept) {
        store.latest.paths.clear();
        EXPECT_EQ(&traced_paths(store, rank, query, target, problem.table, problem.matrix, &problem.p),
                  &given);
        EXPECT_TRUE(store.latest.paths.empty());
      }
    }
    EXPECT_LE(store.kept.size(), 4U);
  }
}

}  // namespace zelvan
