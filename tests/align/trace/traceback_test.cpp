#include "align/trace/traceback.h"

#include <gtest/gtest.h>

#include <array>
#include <map>

#include "align/small_problem.h"

namespace zelvan {
namespace {

// The way that leads to a cell: where it starts, the best cell on it so far, and that cell's value.
using Way = std::array<int32_t, 5>;
constexpr std::size_t BEST = 4;

// The paths that should be found: of the ways from one start that end, where a sequence does or where the
// cell behind them on the diagonal is 0, the best one; of equals the first.
std::vector<Way> expected_paths(const Problem& problem, const CellModel& model) {
  const int32_t last_i = problem.qlen() - 2, last_j = problem.dlen() - 2;
  const bool gap_first = problem.flagged();
  using Place = std::array<int32_t, 2>;
  std::map<Place, Way> ways, paths;  // by cell, and by start
  const auto end_way = [&](const Place& cell) {
    if (!ways.contains(cell)) return;
    const Way& way = ways[cell];
    if (way[BEST] < problem.p.MIN_SCORE || way[0] == way[2] || way[1] == way[3]) return;
    Way& path = paths.try_emplace({way[0], way[1]}, way).first->second;
    if (way[BEST] > path[BEST]) path = way;
  };
  for (int32_t j = 1; j <= last_j; ++j) {
    for (int32_t i = 1; i <= last_i; ++i) {
      const auto [value, flags] = model.at(i, j);
      const bool diagonal = (flags & MOVE_DIAGONAL) && !(gap_first && (flags & (MOVE_UP | MOVE_LEFT)));
      const bool up = !diagonal && (flags & MOVE_UP);
      if (value > 0 && diagonal && !ways.contains({i - 1, j - 1})) {
        ways[{i, j}] = {i, j, i, j, value};
      } else if (value > 0) {
        Way way = ways.at({up ? i : i - 1, diagonal || up ? j - 1 : j});
        const bool takes_tie = diagonal || up || !gap_first;
        if (value > way[BEST] || (takes_tie && value == way[BEST])) way = {way[0], way[1], i, j, value};
        ways[{i, j}] = way;
      }
      if (i == last_i || j == last_j) {
        end_way({i, j});
      } else if (value == 0) {
        end_way({i - 1, j - 1});
      }
    }
  }
  std::vector<Way> found;
  for (const auto& [start, way] : paths) found.push_back(way);
  return found;
}

// The value reached by replaying an alignment's columns under the flag rule; the flags are the model's.
int32_t replayed(Problem& problem, const CellModel& cells, const PathRec& path, const AlignedRows& rows) {
  const int8_t gap = residue_code(problem.matrix, ' ');
  int32_t i = path.start_i - 1, j = path.start_j - 1, value = 0;
  for (int32_t k = 0; k < rows.length; ++k) {
    const auto at = static_cast<std::size_t>(k);
    const uint8_t from = cells.at(i, j).flags;
    const bool in_query = rows.query[at] != gap, in_target = rows.target[at] != gap;
    if (!in_query) value -= problem.gap_row((from & MOVE_UP) == 0)[i - 1];
    if (!in_target) value -= problem.gap_row((from & MOVE_LEFT) == 0)[i];
    if (in_query && in_target) value += problem.matrix.pairscore[rows.query[at]][rows.target[at]];
    i += in_query ? 1 : 0;
    j += in_target ? 1 : 0;
    EXPECT_TRUE(!in_query || rows.query[at] == problem.query[static_cast<std::size_t>(i)]);
    EXPECT_TRUE(!in_target || rows.target[at] == problem.target[static_cast<std::size_t>(j)]);
  }
  EXPECT_EQ(i, path.end_i);
  EXPECT_EQ(j, path.end_j);
  return value;
}

void expect_flags(const MoveFlags& flags, const CellModel& cells, int32_t threshold) {
  for (int32_t j = flags.first; j < flags.rows - 1; ++j) {
    for (int32_t i = flags.first; i < flags.cols - 1; ++i) {
      const Cell& cell = cells.at(i, j);
      const uint8_t found = flags[j][i], high = cell.value >= std::max(threshold, 1) ? CELL_HIGH : 0;
      ASSERT_EQ(found & ~ALL_MOVES, high | (i > 0 && j > 0 && cell.value == 0 ? CELL_ZERO : 0))
          << i << "," << j;
      ASSERT_TRUE(cell.value == 0 || (found & ALL_MOVES) == cell.flags) << i << "," << j;
    }
  }
}

}  // namespace

// Low thresholds keep many paths; those just below the best score leave out most rows.
TEST(Traceback, FindsAndTracesThePathsOfTheModel) {
  Random random(5);
  MoveFlags flags;  // of the pair before: nothing of it may be left
  AlignedRows rows;
  std::size_t kept = 0;
  for (int32_t round = 0; round < 12000; ++round) {
    SCOPED_TRACE(round);
    Problem problem = random_problem(random, MODES[round % 4], round % 3 == 0 ? 40 : 14);
    const CellModel cells(problem);
    problem.p.MIN_SCORE = round % 8 < 4 ? uniform(random, -1, 8) : cells.best() - uniform(random, 0, 6);
    const UTvector<PathRec> paths =
        align_pair(record_of(problem.query), record_of(problem.target), problem.table, problem.p.MIN_SCORE,
                   flags, problem.matrix, &problem.p);
    expect_flags(flags, cells, problem.p.MIN_SCORE);
    EXPECT_TRUE(std::is_sorted(paths.begin(), paths.end(),
                               [](const PathRec& a, const PathRec& b) { return a.best > b.best; }));
    std::vector<Way> found;
    for (const PathRec& path : paths)
      found.push_back({path.start_i, path.start_j, path.end_i, path.end_j, path.best});
    std::sort(found.begin(), found.end());
    ASSERT_EQ(found, expected_paths(problem, cells));
    kept += paths.size();
    for (const PathRec& path : paths) {
      trace_path(problem.query.data(), problem.target.data(), path, flags, rows, problem.matrix, &problem.p);
      ASSERT_EQ(rows.query.size(), static_cast<std::size_t>(rows.length) + 1);
      EXPECT_EQ(rows.query.back() + rows.target.back(), 0);
      ASSERT_EQ(replayed(problem, cells, path, rows), path.best);
    }
  }
  EXPECT_GT(kept, 20000U);
}

// The order of equals was worked out by hand from the heap procedure.
TEST(PathStore, OrdersEqualPathsAsTheHeapSortLeavesThem) {
  using Numbers = std::vector<int32_t>;
  const std::pair<Numbers, Numbers> bests_and_orders[] = {
      {{}, {}}, {{5, 5, 5, 5}, {1, 2, 3, 0}}, {{5, 7, 5}, {1, 2, 0}}, {{7, 5, 5, 9}, {3, 0, 2, 1}}};
  for (const auto& [bests, expected] : bests_and_orders) {
    PathStore store;
    store.slots.resize(2);
    for (const int32_t best : bests) addsco({1, store.total, 9, 9, best, 0}, store);
    Numbers order;
    for (const PathRec& path : dosort(store)) order.push_back(path.start_j);
    EXPECT_EQ(order, expected);
  }
}

}  // namespace zelvan
