// Scans and searches.
#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "align/scan.h"
#include "dna/dna_drivers.h"
#include "dna/frame_scan.h"
#include "driver/key_table.h"
#include "harness.h"
#include "iter/iter_driver.h"
#include "support/forced_set.h"
#include "util/streams.h"

namespace {

constexpr int32_t MODES[] = {200, 202, 210, 212, 10, 12, 20, 22};
constexpr InstructionSet VECTOR_SETS[] = {InstructionSet::PORTABLE, InstructionSet::SSE41,
                                          InstructionSet::AVX2, InstructionSet::AVX512};
constexpr LaneWidth WIDTHS[] = {LaneWidth::BITS8, LaneWidth::BITS16, LaneWidth::BITS32};

// A cheap source of further numbers, below 2^15.
struct Sequence {
  uint32_t state;
  int32_t next() {
    state = state * 1103515245U + 12345U;
    return static_cast<int32_t>(state >> 17);
  }
};

template <class T>
const T& choose(Choices& choices, std::span<const T> values) {
  return values[static_cast<std::size_t>(choices.number(0, static_cast<int32_t>(values.size()) - 1))];
}

template <class T, std::size_t N>
const T& choose(Choices& choices, const T (&values)[N]) {
  return choose(choices, std::span<const T>(values));
}

// ---- Scans: the vector kernels against the scalar ones on random problems.

constexpr int32_t CODES = 27;
constexpr int8_t GAP_CODE = 23;
constexpr int8_t IGAP_CODE = 25;

struct Targets {
  UTvector<UTvector<int8_t>> residues;
  UTvector<SeqRec> records;
};

Targets draw_targets(Choices& choices, Sequence& numbers) {
  Targets targets;
  const int32_t n = choices.number(0, 70);
  const int32_t codes = choices.number(1, CODES);
  const int32_t longest = choices.number(0, 15) == 15 ? 400 : choices.number(0, 40);
  for (int32_t k = 0; k < n; ++k) {
    UTvector<int8_t> seq(static_cast<std::size_t>(numbers.next() % (longest + 1)) + 2);
    for (int8_t& code : seq) code = static_cast<int8_t>(numbers.next() % codes);
    seq.front() = GAP_CODE;
    seq.back() = 0;
    targets.residues.push_back(std::move(seq));
  }
  for (UTvector<int8_t>& seq : targets.residues) {
    SeqRec record;
    record.seq = seq.data();
    record.len = static_cast<int32_t>(seq.size());
    targets.records.push_back(record);
  }
  return targets;
}

// Few distinct query positions or many; scores and penalties of any size that cannot exceed 32 bits in a sum.
LookupTable draw_table(Choices& choices, Sequence& numbers, int32_t qlen) {
  LookupTable table = make_table<int32_t>(CODES, qlen, 0);
  const int32_t step = choices.number(1, 1000);
  const int32_t low = -choices.number(0, 200);
  const int32_t high = choices.number(1, 200);
  const int32_t distinct = choices.number(1, 100);
  for (int32_t i = 1; i <= qlen - 2; ++i) {
    const bool repeated = i > distinct;
    for (int32_t c = 0; c < CODES; ++c) {
      table[c][i] = repeated ? table[c][i - distinct] : (low + numbers.next() % (high - low + 1)) * step;
    }
  }
  return table;
}

// One vector kernel a case, drawn last, so that every input can meet every kernel.
void compare_scans(const Targets& targets, const LookupTable& table, const ScoreMatrix& matrix, int32_t qlen,
                   Sequence& numbers, const Params& p) {
  const auto n = static_cast<int32_t>(targets.records.size());
  const auto scan_by = [&](InstructionSet set, LaneWidth first) {
    UTvector<int32_t> scores(targets.records.size(), -77);
    if (p.MODE < 100) {
      scan_frames_by(set, first, qlen, targets.records.data(), n, table, scores.data(), &p);
    } else {
      scan_database_by(set, first, qlen, targets.records.data(), n, table, matrix, scores.data(), &p);
    }
    return scores;
  };
  InstructionSet set = VECTOR_SETS[numbers.next() % std::ssize(VECTOR_SETS)];
  if (!is_usable(set)) set = InstructionSet::PORTABLE;
  require(scan_by(set, WIDTHS[numbers.next() % std::ssize(WIDTHS)]) ==
              scan_by(InstructionSet::REFERENCE, LaneWidth::BITS8),
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

std::string draw_letters(Sequence& numbers, int32_t length, bool dna) {
  const std::string_view letters = dna ? "ACGTACGTACGTACGTN" : "ARNDCQEGHILKMFPSTWYVARNDCQEGHILKMFPSTWYVBZXU";
  std::string text;
  for (int32_t k = 0; k < length; ++k) {
    text += letters[static_cast<std::size_t>(numbers.next()) % letters.size()];
  }
  return text;
}

// A database in which some sequences hold a mutated copy of a piece of the query.
std::string draw_database(Choices& choices, Sequence& numbers, const std::string& query, bool dna) {
  const int32_t n = choices.number(0, 150);
  const int32_t longest = choices.number(0, 90);
  const int32_t related = choices.number(0, 60);  // every so manieth
  std::string text;
  for (int32_t k = 0; k < n; ++k) {
    text += ">s" + std::to_string(k) + (k % 3 == 0 ? "\n" : " a title\n");
    text += draw_letters(numbers, numbers.next() % (longest + 1), dna);
    if (related > 0 && k % related == 0) {
      std::string copy = query.substr(static_cast<std::size_t>(numbers.next()) % (query.size() + 1));
      for (char& letter : copy) {
        if (numbers.next() % 8 == 0) letter = draw_letters(numbers, 1, dna)[0];
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
  char* text = nullptr;
  std::size_t size = 0;
  FILE* const report = open_memstream(&text, &size);
  FILE* const before = std_out;
  p.STDOUT = std_out = report;
  const bool whole = came_back([&] {
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
  std_out = before;
  std::fclose(report);
  std::string result(text, size);
  std::free(text);
  return (whole ? "whole\n" : "ended\n") + result;
}

void scan(FuzzInput input) {
  Choices choices{input};
  Sequence numbers{static_cast<uint32_t>(choices.number(0, INT32_MAX))};
  Params p = default_params();
  ScoreMatrix matrix;
  matrix.inlen = CODES;
  matrix.xindex.fill(22);
  matrix.xindex[static_cast<unsigned char>(p.GAP_CHARACTER)] = GAP_CODE;
  matrix.xindex[static_cast<unsigned char>(p.IGAP_CHARACTER)] = IGAP_CODE;
  p.MODE = choose(choices, MODES);
  const int32_t lowest = choices.number(0, 3) == 0 ? -3000 : 0;
  p.LD_PEN = choices.number(lowest, 3000) * choices.number(1, 30);
  p.LI_PEN = choices.number(lowest, 3000) * choices.number(1, 30);
  p.FS_PEN = choices.number(lowest, 3000) * choices.number(1, 30);
  const int32_t qlen = choices.number(2, 80);
  LookupTable table = draw_table(choices, numbers, qlen);
  for (int32_t i = 0; i < qlen; ++i) {
    table[GAP_CODE][i] = lowest + numbers.next() % (3000 - lowest);
    table[IGAP_CODE][i] = lowest + numbers.next() % (3000 - lowest);
  }
  compare_scans(draw_targets(choices, numbers), table, matrix, qlen, numbers, p);
}

void search(FuzzInput input) {
  Choices choices{input};
  Sequence numbers{static_cast<uint32_t>(choices.number(0, 65535))};
  Params p = default_params();
  p.MODE = choose(choices, MODES);
  // Defaults of small searches: with those of real ones there would be no statistics and no report.
  p.DO_STATS = p.MODE < 100 ? 1 : 2;
  p.LPFIT_MINBUCK = p.LPFIT_MINRANGE = 3;
  p.MIN_NSTATS = 10;
  p.PROBCUT = 10;
  if (!came_back([&] { choose_settings(choices, p); })) return;  // a refused PRECISION
  const bool dna_query = p.MODE == 20 || p.MODE == 22;
  const bool dna_database = p.MODE == 10 || p.MODE == 12;
  const std::string query = draw_letters(numbers, choices.number(0, 90), dna_query);
  p.QSEQ_FILE.name = scratch_file("query", ">q query\n" + query + "\n").c_str();
  p.DB_FILE.name = scratch_file("database", draw_database(choices, numbers, query, dna_database)).c_str();
  const std::string expected = report_of(InstructionSet::REFERENCE, p);
  const InstructionSet set = choose(choices, VECTOR_SETS);
  if (is_usable(set)) require(report_of(set, p) == expected, "the report does not depend on the kernels");
}

constexpr FuzzTarget TARGETS[] = {{"scan", scan}, {"search", search}};

}  // namespace

std::span<const FuzzTarget> search_targets() {
  return TARGETS;
}
