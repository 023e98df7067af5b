#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "align/scan.h"
#include "dna/dna_drivers.h"
#include "dna/frame_scan.h"
#include "harness.h"
#include "iter/iter_driver.h"
#include "support/forced_set.h"
#include "targets.h"
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

// ---- Scans.

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

void compare_scans(const Targets& targets, const LookupTable& table, const ScoreMatrix& matrix, int32_t qlen,
                   const Params& p) {
  const auto n = static_cast<int32_t>(targets.records.size());
  const bool translated = p.MODE < 100;
  const auto scan_by = [&](InstructionSet set, LaneWidth first) {
    UTvector<int32_t> scores(targets.records.size(), -77);
    if (translated) {
      scan_frames_by(set, first, qlen, targets.records.data(), n, table, scores.data(), &p);
    } else {
      scan_database_by(set, first, qlen, targets.records.data(), n, table, matrix, scores.data(), &p);
    }
    return scores;
  };
  const UTvector<int32_t> expected = scan_by(InstructionSet::REFERENCE, LaneWidth::BITS8);
  for (const InstructionSet set : VECTOR_SETS) {
    if (!is_usable(set)) continue;
    for (const LaneWidth first : WIDTHS)
      require(scan_by(set, first) == expected, "the scores of a vector scan");
  }
}

// ---- Whole searches.

struct Setting {
  const char* key;
  const char* values[8];  // up to the first null
};

constexpr Setting SETTINGS[] = {
    {"PRECISION", {"1", "10", "1000", "0", "-10", "100000"}},
    {"GAP_CHARACTER", {"-", "A", "X"}},
    {"IGAP_CHARACTER", {"-", "A", "X"}},
    {"STOP_CHARACTER", {"-", "A", "X"}},
    {"MATRIX_FORMAT", {"0", "2"}},
    {"USE_GAPDEFS", {"0"}},
    {"LD_PEN", {"0", "1", "-1", "0.29", "50", "1e300", "-1e300"}},
    {"LI_PEN", {"0", "1", "-3", "12.5", "50", "1e300", "-1e300"}},
    {"FS_PEN", {"0", "1", "-2", "15", "1e300", "-1e300"}},
    {"FSE_PEN", {"0", "1", "-2", "15", "100000"}},
    {"STOP_WEIGHT", {"0", "5", "-1000", "99999999", "-99999999"}},
    {"MATRIX_FILE", {"PAM30", "BLOSUM45", "PAM250"}},
    {"DO_STATS", {"0", "1", "2", "-1"}},
    {"PROB_TYPE", {"0", "1", "2", "3"}},
    {"FIT_TYPE", {"0", "1", "2"}},
    {"MIN_NSTATS", {"0", "1", "20", "1000"}},
    {"TOP_ONLY", {"0", "1"}},
    {"TOP_CUTFRAC", {"0", "0.5", "1", "2", "-1"}},
    {"MIN_SCORE", {"-1", "0", "20", "99999999", "-99999999"}},
    {"MIN_LEN", {"-1", "0", "20", "1000"}},
    {"MIN_ASCORE", {"-1", "0", "20", "99999999", "-99999999"}},
    {"MAX_NOUT", {"-1", "0", "1", "7", "100000"}},
    {"MAX_AOUT", {"-1", "0", "1", "7", "100000"}},
    {"NPRINT_TO_THRESHOLD", {"0", "1"}},
    {"APRINT_TO_THRESHOLD", {"0", "1"}},
    {"PROBCUT", {"0", "1e-300", "0.1", "1e30", "-1", "nan", "inf"}},
    {"PROBCUT2", {"0", "1e-300", "0.0001", "-1", "nan"}},
    {"APROBCUT", {"0", "1e-9", "1e30", "-1", "nan"}},
    {"PIDTHRESH", {"0", "0.5", "1", "2", "-1", "nan"}},
    {"POSWGTFAC", {"0", "0.5", "100", "-1", "1e300", "nan"}},
    {"PEN_FACTOR", {"0", "0.5", "10", "-1", "1e300", "nan"}},
    {"NITER", {"-1", "0", "1", "2", "3", "4"}},
    {"LPFIT_MINBUCK", {"-1", "0", "1", "10", "100"}},
    {"LPFIT_MINRANGE", {"-1", "0", "1", "3", "7", "100"}},
    {"LPFIT_LPLBUCKETWIDTH", {"0", "-1", "0.01", "0.1", "1", "100", "nan"}},
    {"LPFIT_PRINT", {"0", "1"}},
    {"PRINT_PROFILES", {"0", "1", "2"}},
    {"PROFILE_WEIGHT_METHOD", {"-1", "0", "1", "2", "3"}},
    {"PRINT_FRQ_TABS", {"0", "1"}},
    {"PRINT_BLOCK_FILE", {"0", "1"}},
    {"PRINT_FRAG_FILE", {"0", "1"}},
    {"FRAG_FILE_FORMAT", {"-1", "0", "1", "2"}},
    {"MULTIPLE_OUTPUT_LENGTH", {"-1", "0", "1", "10"}},
    {"OUTPUT_LENGTH", {"-1", "0", "1", "3", "1000"}},
    {"OUTLEN_INCREASE_FACTOR", {"0", "-1", "1", "100"}},
    {"LOG_SCORES", {"0", "1", "2", "3"}},
    {"SHOW_TITLES", {"0", "1"}},
    {"SHOW_TITLES_WIDTH", {"-1", "0", "1", "100"}},
    {"SHOW_IDENT_WIDTH", {"-1", "0", "1", "100"}},
    {"SHOW_LEN", {"0", "1"}},
    {"SHOW_PMATRIX", {"0", "1"}},
    {"COMPLEMENT_QUERY", {"0", "1"}},
    {"MIXED_MODE", {"0", "1"}},
    {"MM_LD_PEN", {"-1", "0", "3"}},
    {"EXTRACT_SEQ", {"-1", "0", "1", "2", "5", "1000"}},
    {"EXTRACT_SEQ_FORMAT", {"-1", "0", "1"}},
    {"DUMP_STATS", {"0", "1"}},
    {"VERBOSE", {"0", "1", "2", "11", "51", "1002"}},
    {"TIME", {"0", "1", "6"}},
    {"FAST", {"0", "1"}},
    {"CUT_CORNERS", {"0", "1"}},
    {"FIND_REPEATS", {"0", "1"}},
};

void choose_settings(Choices& choices, Params& p) {
  for (int32_t left = choices.number(0, 12); left > 0; --left) {
    const Setting& setting = SETTINGS[choices.number(0, std::size(SETTINGS) - 1)];
    int32_t count = 0;
    while (count < 8 && setting.values[count] != nullptr) ++count;
    set_key(p, setting.key, setting.values[choices.number(0, count - 1)]);
  }
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

}  // namespace

void fuzz_scan(FuzzInput input) {
  Choices choices{input.data(), input.data() + input.size()};
  Sequence numbers{static_cast<uint32_t>(choices.number(0, INT32_MAX))};
  Params p = default_params();
  ScoreMatrix matrix;
  matrix.inlen = CODES;
  matrix.xindex.fill(22);
  matrix.xindex[static_cast<unsigned char>(p.GAP_CHARACTER)] = GAP_CODE;
  matrix.xindex[static_cast<unsigned char>(p.IGAP_CHARACTER)] = IGAP_CODE;
  p.MODE = MODES[choices.number(0, 7)];
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
  compare_scans(draw_targets(choices, numbers), table, matrix, qlen, p);
}

void fuzz_search(FuzzInput input) {
  Choices choices{input.data(), input.data() + input.size()};
  Sequence numbers{static_cast<uint32_t>(choices.number(0, 65535))};
  Params p = default_params();
  set_key(p, "MODE", std::to_string(MODES[choices.number(0, 7)]));
  // Defaults of small searches: with those of real ones there would be no statistics and no report.
  for (const auto& [key, value] : {std::pair("DO_STATS", p.MODE < 100 ? "1" : "2"),
                                   {"LPFIT_MINBUCK", "3"},
                                   {"LPFIT_MINRANGE", "3"},
                                   {"MIN_NSTATS", "10"},
                                   {"PROBCUT", "10"}}) {
    set_key(p, key, value);
  }
  choose_settings(choices, p);
  set_key(p, "SHOW_BLURB", "0");
  const bool dna_query = p.MODE == 20 || p.MODE == 22;
  const bool dna_database = p.MODE == 10 || p.MODE == 12;
  const std::string query = draw_letters(numbers, choices.number(0, 90), dna_query);
  p.QSEQ_FILE.name = scratch_file("query", ">q query\n" + query + "\n").c_str();
  p.DB_FILE.name = scratch_file("database", draw_database(choices, numbers, query, dna_database)).c_str();
  const std::string expected = report_of(InstructionSet::REFERENCE, p);
  const InstructionSet set = VECTOR_SETS[choices.number(0, std::size(VECTOR_SETS) - 1)];
  if (is_usable(set)) require(report_of(set, p) == expected, "the report does not depend on the kernels");
}
