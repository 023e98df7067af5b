// Random queries and databases for the scans.
#pragma once

#include <algorithm>
#include <string>

#include "align/lookup.h"
#include "align/scan/scan.h"
#include "support/small_alphabet.h"

namespace zelvan {

#if defined(__aarch64__)
constexpr InstructionSet VECTOR_SETS[] = {InstructionSet::PORTABLE, InstructionSet::NEON};
#else
constexpr InstructionSet VECTOR_SETS[] = {InstructionSet::PORTABLE, InstructionSet::SSE41,
                                          InstructionSet::AVX2, InstructionSet::AVX512};
#endif
constexpr LaneWidth WIDTHS[] = {LaneWidth::BITS8, LaneWidth::BITS16, LaneWidth::BITS32};
constexpr int32_t CODES = 27;
constexpr int8_t GAP_CODE = 23;
constexpr int8_t IGAP_CODE = 25;

// How scores and penalties are drawn; all are multiplied by `unit`.
struct Draw {
  const char* name;
  int32_t low, high, unit;            // scores
  int32_t penalty_low, penalty_high;  // of all kinds
  bool few_rows;                      // query positions drawn from few different ones
};
constexpr Draw MATRIX_LIKE = {"matrix-like", -8, 11, 100, 1, 14, true};
constexpr Draw PROFILE_LIKE = {"profile-like", -1500, 1500, 1, 1, 1400, false};
constexpr Draw DRAWS[] = {
    MATRIX_LIKE,
    PROFILE_LIKE,
    {"zero and small penalties", -3, 4, 100, 0, 2, true},
    {"byte range", -128, 127, 7, 0, 127, true},
    {"word range", -32768, 32767, 1, 0, 32767, false},
    {"beyond words", -300000, 200000, 1, 0, 90000, false},
    {"negative penalties", -9, 12, 100, -3, 9, true},
    {"negative penalties only", -9, 12, 1, -5, 0, false},
    {"mostly positive scores", -1, 5, 100, 0, 12, true},
    {"never positive", -9, 0, 10, 0, 12, true},
    {"costly gaps", -8, 11, 1, 100, 40000, true},
};

// A query, targets and penalties.
struct ScanProblem {
  ScoreMatrix matrix;
  Params params = small_params(0);
  LookupTable table;
  int32_t qlen = 0;
  UTvector<UTvector<int8_t>> residues;
  UTvector<SeqRec> targets;

  ScanProblem() {
    matrix.inlen = CODES;
    matrix.xindex.fill(22);
    matrix.xindex[' '] = GAP_CODE;
    matrix.xindex[':'] = IGAP_CODE;
  }

  int32_t n() const { return static_cast<int32_t>(targets.size()); }
  void add_target(UTvector<int8_t> codes) {
    codes.insert(codes.begin(), GAP_CODE);
    codes.push_back(0);
    residues.push_back(std::move(codes));
    SeqRec record;
    record.seq = residues.back().data();
    record.len = static_cast<int32_t>(residues.back().size());
    targets.push_back(record);
  }
  void add_random_target(Random& random, int32_t length, int32_t codes) {
    UTvector<int8_t> target(static_cast<std::size_t>(length));
    for (int8_t& code : target) code = static_cast<int8_t>(uniform(random, 0, codes - 1));
    add_target(std::move(target));
  }
  // The penalties of the gap rows are those of the keys or different ones at every position.
  void draw_query(Random& random, const Draw& draw, int32_t length) {
    const auto score = [&] { return uniform(random, draw.low, draw.high) * draw.unit; };
    // Now and then a penalty is no multiple of the unit.
    const auto penalty = [&] {
      return uniform(random, draw.penalty_low, draw.penalty_high) * draw.unit +
             (uniform(random, 0, 7) == 0 ? draw.unit / 2 : 0);
    };
    qlen = length;
    table = make_table<int32_t>(CODES, qlen, 0);
    const int32_t kinds = draw.few_rows ? uniform(random, 1, 20) : qlen;
    auto kind_scores = make_table<int32_t>(kinds, CODES, 0);
    std::generate(kind_scores.cells.begin(), kind_scores.cells.end(), score);
    const bool steady_extension = uniform(random, 0, 1) == 0, steady_opening = uniform(random, 0, 1) == 0;
    params.LD_PEN = penalty();
    params.LI_PEN = penalty();
    params.FS_PEN = penalty();
    for (int32_t i = 0; i <= qlen - 2; ++i) {
      const int32_t kind = draw.few_rows ? uniform(random, 0, kinds - 1) : i;
      for (int32_t c = 0; c < CODES; ++c) table[c][i] = kind_scores[kind][c];
      table[GAP_CODE][i] = steady_extension ? params.LD_PEN : penalty();
      table[IGAP_CODE][i] = steady_opening ? params.LI_PEN : penalty();
    }
  }
  // A query and up to 700 targets in the manner of DRAWS[round]; returns what to call them.
  std::string draw_round(Random& random, int32_t round) {
    const Draw& draw = DRAWS[static_cast<std::size_t>(round) % std::size(DRAWS)];
    draw_query(random, draw, uniform(random, 2, round % 5 == 0 ? 90 : 14));
    const int32_t longest = round % 3 == 0 ? 90 : 12;
    const int32_t codes = uniform(random, 1, CODES);
    for (int32_t k = uniform(random, 1, 700); k > 0; --k) {
      add_random_target(random, uniform(random, 0, longest), codes);
    }
    return std::string(draw.name) + ", round " + std::to_string(round);
  }
};

}  // namespace zelvan
