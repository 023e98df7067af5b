#include "align/trace/path_search.h"

#include "support/scan_trial.h"

namespace zelvan {
namespace {

class PathSearchOfEverySet : public EverySet {};

using Records = std::vector<std::array<int32_t, 7>>;

Records records_of(const PathStore& store) {
  Records records;
  for (const UTvector<PathRec>& slot : store.slots) {
    for (const PathRec& path : slot) {
      records.push_back(
          {path.start_i, path.start_j, path.end_i, path.end_j, path.best, path.score, store.total});
    }
  }
  return records;
}

// The definition against the search from high cells on: the same records in the same order, with thresholds
// that only the best cell reaches as well as with those that any cell does.
TEST_P(PathSearchOfEverySet, FindsHighPathsAsAmongAll) {
  Random random(41);
  std::size_t kept = 0;
  int32_t pairs = 0;
  MoveFlags flags;
  for (int32_t round = 0; pairs < 60000 && !HasFailure(); ++round) {
    ScanProblem problem;
    SCOPED_TRACE(problem.draw_round(random, round));
    const GapRows gaps = {problem.table[GAP_CODE], problem.table[round % 2 == 0 ? IGAP_CODE : GAP_CODE]};
    if (any_negative(gaps, problem.qlen)) continue;
    pairs += problem.n();
    for (const SeqRec& target : problem.targets) {
      const auto fill = [&](int32_t threshold) {
        return fill_flags(problem.qlen, target.seq, target.len, problem.table, gaps, threshold, GetParam(),
                          flags);
      };
      const int32_t best = fill(1).best;
      const auto part = static_cast<int32_t>(int64_t{best} * uniform(random, 0, 60) / 100);
      const int32_t threshold =
          std::array{best - uniform(random, 0, 12), best - part, best / 2, 1, 5}[pairs % 5];
      const FlagSweep sweep = fill(threshold);
      const FlaggedPair pair = {problem.qlen, target.len,
                                target.seq,   problem.table,
                                gaps,         round % 2 == 0 ? FLAGGED_PATHS : LINEAR_PATHS,
                                flags,        std::max(threshold, 1)};
      PathStore expected, found;
      empty_store(expected, problem.qlen);
      empty_store(found, problem.qlen);
      find_all_paths(pair, expected);
      find_high_paths(pair, sweep, found);
      ASSERT_EQ(records_of(found), records_of(expected)) << "threshold " << threshold;
      kept += records_of(found).size();
    }
  }
  EXPECT_GT(kept, 20000U);
}

INSTANTIATE_TEST_SUITE_P(Trace, PathSearchOfEverySet, ::testing::ValuesIn(VECTOR_SETS), set_name);
INSTANTIATE_TEST_SUITE_P(PlainFlags, PathSearchOfEverySet, ::testing::Values(InstructionSet::REFERENCE),
                         set_name);

}  // namespace
}  // namespace zelvan
