// Scans and searches.
#include <algorithm>
#include <iterator>

#include "dna/dna_drivers.h"
#include "dna/frame_scan.h"
#include "driver/key_table.h"
#include "harness.h"
#include "iter/iter_driver.h"
#include "support/forced_set.h"
#include "support/scan_problem.h"

namespace zelvan {
namespace {

constexpr int32_t MODES[] = {200, 202, 210, 212, 10, 12, 20, 22};

template <class Values>
const auto& choose(Choices& choices, const Values& values) {
  return values[static_cast<std::size_t>(choices.number(0, static_cast<int32_t>(std::size(values)) - 1))];
}

// The vector kernels against the scalar ones on random problems. The kernel is drawn last, so that every input can meet
// every kernel.
void scan(FuzzInput input) {
  Choices choices{input};
  Random random(static_cast<uint32_t>(choices.number(0, INT32_MAX)));
  Draw draw = {};
  draw.low = -choices.number(0, 200);
  draw.high = choices.number(1, 200);
  draw.unit = choices.number(1, 1000);
  draw.penalty_high = choices.number(0, 300);
  draw.penalty_low = choices.number(0, 3) == 0 ? -draw.penalty_high : 0;
  draw.few_rows = choices.number(0, 1) == 0;
  ScanProblem problem;
  problem.params.MODE = choose(choices, MODES);
  problem.draw_query(random, draw, choices.number(2, 80));
  const int32_t codes = choices.number(1, CODES);
  const int32_t longest = choices.number(0, 15) == 15 ? 400 : choices.number(0, 40);
  for (int32_t left = choices.number(0, 70); left > 0; --left) {
    problem.add_random_target(random, uniform(random, 0, longest), codes);
  }
  const auto scores_by = [&](InstructionSet set, LaneWidth first) {
    UTvector<int32_t> scores(problem.targets.size(), -77);
    if (problem.params.MODE < 100) {
      scan_frames_by(set, first, problem.qlen, {problem.targets.data(), problem.n()}, problem.table,
                     scores.data(), &problem.params);
    } else {
      scan_database_by(set, first, problem.qlen, {problem.targets.data(), problem.n()}, problem.table,
                       problem.matrix, scores.data(), &problem.params);
    }
    return scores;
  };
  InstructionSet set = VECTOR_SETS[random() % std::size(VECTOR_SETS)];
  if (!is_usable(set)) set = InstructionSet::PORTABLE;
  require(scores_by(set, WIDTHS[random() % std::size(WIDTHS)]) ==
              scores_by(InstructionSet::REFERENCE, LaneWidth::BITS8),
          "the scores of a vector scan");
}

// ---- Whole searches of random databases with random keys: their reports must not depend on the kernels.

constexpr const char* COUNTS[] = {"0", "1", "-1", "2", "3", "7", "20", "1000"};
constexpr const char* NUMBERS[] = {"0",     "1",      "-1",   "10",       "0.29",     "3",
                                   "12.5",  "50",     "1000", "0.01",     "1e-300",   "1e30",
                                   "1e300", "-1e300", "nan",  "99999999", "-99999999"};

// Up to a dozen keys of the table, but for files and streams, with any of the values above.
void choose_settings(Choices& choices, Params& p) {
  const Params before = p;
  for (int32_t left = choices.number(0, 12); left > 0; --left) {
    const KeyEntry& key = choose(choices, parameter_keys());
    if (key.type == KeyType::INT) {
      store_value(key, choose(choices, COUNTS), "getcmd", &p);
    } else if (key.type < KeyType::FILE_NAME) {
      store_value(key, choose(choices, NUMBERS), "getcmd", &p);
    }
  }
  p.MODE = before.MODE;  // to which the data have to fit
  p.QSEQ_FORMAT = before.QSEQ_FORMAT;
  p.DB_FORMAT = before.DB_FORMAT;
  p.NITER = std::min(p.NITER, 4);
  p.SHOW_BLURB = 0;
}

// A database in which some sequences hold a mutated copy of a piece of the query.
std::string draw_database(Choices& choices, Random& random, const std::string& query,
                          const std::string& letters) {
  const int32_t n = choices.number(0, 150);
  const int32_t longest = choices.number(0, 90);
  const int32_t related = choices.number(0, 60);  // every so manieth
  std::string text;
  for (int32_t k = 0; k < n; ++k) {
    text += ">s" + std::to_string(k) + (k % 3 == 0 ? "\n" : " a title\n");
    text += random_letters(random, letters, uniform(random, 0, longest));
    if (related > 0 && k % related == 0) {
      std::string copy = query.substr(random() % (query.size() + 1));
      for (char& letter : copy) {
        if (random() % 8 == 0) letter = letters[random() % letters.size()];
      }
      text += copy;
    }
    text += '\n';
  }
  return text;
}

// The report of one search, without the times in it, and how it ended.
std::string report_of(InstructionSet set, Params p) {
  forced_set = set;
  bool whole = false;
  const std::string report = printed([&] {
    p.STDOUT = std_out;
    whole = came_back([&] {
      switch (p.MODE) {
        case 10:
          return swipd(&p);
        case 12:
          return swaipd2(&p);
        case 20:
          return swadp(&p);
        case 22:
          return swaidp2(&p);
        default:
          return swpp2_iter(&p);
      }
    });
  });
  return (whole ? "whole\n" : "ended\n") + report;
}

void search(FuzzInput input) {
  Choices choices{input};
  Random random(static_cast<uint32_t>(choices.number(0, UINT16_MAX)));
  Params p = default_params();
  p.MODE = choose(choices, MODES);
  // Defaults of small searches: with those of real ones there would be no statistics and no report.
  p.DO_STATS = p.MODE < 100 ? 1 : 2;
  p.LPFIT_MINBUCK = p.LPFIT_MINRANGE = 3;
  p.MIN_NSTATS = 10;
  p.PROBCUT = 10;
  if (!came_back([&] { choose_settings(choices, p); })) return;  // a refused PRECISION
  const std::string dna = "ACGTACGTACGTACGTN", protein = "ARNDCQEGHILKMFPSTWYVARNDCQEGHILKMFPSTWYVBZXU";
  const bool dna_query = p.MODE == 20 || p.MODE == 22, dna_database = p.MODE == 10 || p.MODE == 12;
  const std::string query = random_letters(random, dna_query ? dna : protein, choices.number(0, 90));
  p.QSEQ_FILE.name = scratch_file("query", ">q query\n" + query + "\n").c_str();
  const std::string database = draw_database(choices, random, query, dna_database ? dna : protein);
  p.DB_FILE.name = scratch_file("database", database).c_str();
  const std::string expected = report_of(InstructionSet::REFERENCE, p);
  const InstructionSet set = choose(choices, VECTOR_SETS);
  if (is_usable(set)) require(report_of(set, p) == expected, "the report does not depend on the kernels");
}

}  // namespace

const FuzzTargets& search_targets() {
  static const FuzzTargets targets = {{"scan", scan}, {"search", search}};
  return targets;
}

}  // namespace zelvan
