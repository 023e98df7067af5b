// The scans and the move flags of a traceback in cells per second: every usable instruction set and lane width,
// the scalar kernels as baseline.
// The database is the example's, residues shuffled, repeated up to the size that a run needs; the query is one
// of its sequences, cut or repeated to length.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>

#include "align/lookup.h"
#include "align/scan/scan.h"
#include "align/trace/move_flags.h"
#include "dna/frame_scan.h"
#include "seq/alphabet.h"
#include "seq/matrix.h"
#include "seq/sequence_file.h"

namespace zelvan {
namespace {

struct Setting {
  Params params;
  ScoreMatrix* matrix = nullptr;
  TextDatabase database;

  Setting() {
    Params& p = params;
    p.MATRIX_DIR = ZELVAN_SOURCE_DIR "/data/matrices";
    p.MATRIX_FILE.name = "BLOSUM62";
    p.MATRIX_FORMAT = 1;
    p.PRECISION = 100;
    p.STOP_WEIGHT = -3000;
    p.GAP_CHARACTER = ' ';
    p.FGAP_CHARACTER = '^';
    p.IGAP_CHARACTER = ':';
    p.STOP_CHARACTER = '!';
    p.DB_FILE.name = ZELVAN_SOURCE_DIR "/examples/uniprot_sample.fasta";
    p.DB_FORMAT = 1;
    p.MAX_NSEQ = 1'000'000;
    p.MAX_SEQ_LEN = 1'000'000;
    p.LI_PEN = 1100;
    p.FS_PEN = 1500;
    matrix = getmat(&p);
    read_text_database(database, false, &p);
    const auto n = static_cast<int32_t>(database.seqs.size());
    encode_sequences(database.seqs.data(), n, *matrix);
    std::mt19937 random(1);
    for (const SeqRec& s : database.seqs) std::shuffle(s.seq + 1, s.seq + s.len - 1, random);
  }
};

Setting& setting() {
  static Setting only;
  return only;
}

// Sequences of the example until they hold `residues`.
UTvector<SeqRec> targets_of(int64_t residues) {
  const UTvector<SeqRec>& source = setting().database.seqs;
  UTvector<SeqRec> targets;
  for (std::size_t k = 0; residues > 0; ++k) {
    targets.push_back(source[k % source.size()]);
    residues -= targets.back().len - 2;
  }
  return targets;
}

// The scores of a query: those of the matrix, moved off it to half units as in profiles, or to any number as
// in profiles with penalties by position.
enum class Scores { MATRIX, HALF_UNITS, FINE };

LookupTable query_table(int32_t length, Scores scores) {
  Setting& s = setting();
  UTvector<int8_t> query = {0};
  for (std::size_t k = 7; static_cast<int32_t>(query.size()) <= length; ++k) {
    const SeqRec& source = s.database.seqs[k];
    query.insert(query.end(), source.seq + 1, source.seq + source.len - 1);
  }
  query.resize(static_cast<std::size_t>(length + 1));
  query.push_back(0);
  LookupTable table =
      mlookgap(query.data(), length + 2, *s.matrix, s.params.LD_PEN, s.params.LI_PEN, &s.params);
  std::mt19937 random(3);
  const int32_t step = scores == Scores::FINE ? 1 : 50;
  if (scores != Scores::MATRIX) {
    for (int32_t& cell : table.cells) cell += step * static_cast<int32_t>(random() % (100 / step));
  }
  return table;
}

void scan_rate(benchmark::State& state, int32_t mode, InstructionSet set, LaneWidth first, int32_t length,
               Scores kind) {
  Setting& s = setting();
  s.params.MODE = mode;
  s.params.LD_PEN = mode == 200 || mode == 210 || mode == 20 ? 800 : 100;
  const LookupTable table = query_table(length, kind);
  const int64_t cells = set == InstructionSet::REFERENCE ? 100'000'000 : 1'500'000'000;
  const UTvector<SeqRec> targets = targets_of(cells / length);
  UTvector<int32_t> scores(targets.size());
  const auto n = static_cast<int32_t>(targets.size());
  int64_t scanned = 0;
  for (const SeqRec& target : targets) scanned += static_cast<int64_t>(target.len - 2) * length;
  ScanTally tally;
  for (auto _ : state) {
    tally = mode < 200
                ? scan_frames_by(set, first, length + 2, {targets.data(), n}, table, scores.data(), &s.params)
                : scan_database_by(set, first, length + 2, {targets.data(), n}, table, *s.matrix,
                                   scores.data(), &s.params);
    benchmark::DoNotOptimize(scores.data());
  }
  state.counters["cells"] =
      benchmark::Counter(static_cast<double>(scanned), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["repeated"] = static_cast<double>(tally.saturated[0] + tally.saturated[1]);
}

void flag_rate(benchmark::State& state, InstructionSet set, int32_t length) {
  Setting& s = setting();
  const LookupTable table = query_table(length, Scores::MATRIX);
  const SeqRec target = targets_of(1).front();
  const GapRows gaps = {table[residue_code(*s.matrix, s.params.GAP_CHARACTER)],
                        table[residue_code(*s.matrix, s.params.IGAP_CHARACTER)]};
  MoveFlags flags;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        fill_flags(length + 2, target.seq, target.len, table, gaps, s.params.LI_PEN, set, flags));
  }
  state.counters["cells"] = benchmark::Counter(static_cast<double>(residues(target)) * length,
                                               benchmark::Counter::kIsIterationInvariantRate);
}

void add(const std::string& name, int32_t mode, InstructionSet set, LaneWidth first, int32_t length,
         Scores kind) {
  benchmark::RegisterBenchmark(name.c_str(), scan_rate, mode, set, first, length, kind)
      ->Unit(benchmark::kMillisecond);
}

struct Width {
  const char* name;
  LaneWidth width;
};
struct Pass {
  const char* name;
  int32_t mode;
  Scores scores;
};
constexpr Width WIDTHS[] = {
    {"8bit", LaneWidth::BITS8}, {"16bit", LaneWidth::BITS16}, {"32bit", LaneWidth::BITS32}};
constexpr InstructionSet SETS[] = {InstructionSet::PORTABLE,   InstructionSet::SSE41,
                                   InstructionSet::AVX2,       InstructionSet::AVX512,
                                   InstructionSet::AVX512VBMI, InstructionSet::NEON};

const bool registered = [] {
  for (const InstructionSet set : {InstructionSet::REFERENCE, InstructionSet::PORTABLE, InstructionSet::SSE41,
                                   InstructionSet::AVX2, InstructionSet::AVX512, InstructionSet::NEON}) {
    if (!is_usable(set)) continue;
    const std::string name = std::string("flags/query361/") + instruction_set_name(set);
    benchmark::RegisterBenchmark(name.c_str(), flag_rate, set, 361)->Unit(benchmark::kMicrosecond);
  }
  for (const int32_t mode : {200, 202, 10, 20, 22}) {
    const std::string name = "mode" + std::to_string(mode) + "/query361/";
    add(name + "scalar", mode, InstructionSet::REFERENCE, LaneWidth::BITS8, 361, Scores::MATRIX);
    for (const InstructionSet set : SETS) {
      if (!is_usable(set)) continue;
      for (const Width& width : WIDTHS) {
        add(name + instruction_set_name(set) + "/" + width.name, mode, set, width.width, 361, Scores::MATRIX);
      }
    }
  }
  for (const int32_t length : {60, 150, 361, 1000, 5000}) {
    for (const auto& [kind, mode, scores] : {Pass{"first202", 202, Scores::MATRIX},
                                             {"profile202", 202, Scores::HALF_UNITS},
                                             {"profile212", 212, Scores::FINE}}) {
      const std::string name = std::string(kind) + "/query" + std::to_string(length);
      for (const InstructionSet set : SETS) {
        if (!is_usable(set)) continue;
        add(name + "/" + instruction_set_name(set), mode, set, LaneWidth::BITS8, length, scores);
      }
    }
  }
  return true;
}();

}  // namespace
}  // namespace zelvan
