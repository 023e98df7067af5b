#include "dna/frame_shift_text.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "align/alignment_text.h"
#include "dna/frame_shift_traceback.h"
#include "driver/search_mode.h"
#include "util/streams.h"

namespace zelvan {
namespace {

constexpr int32_t CODON = 3;

// An alignment written out, a character a column in every line.
struct FrameLines {
  UTstring protein;
  UTstring markers;
  UTstring translated;
  std::array<UTstring, CODON> bases;
  UTvector<int32_t> rows_taken;   // residues and nucleotides that a column takes
  UTvector<int32_t> bases_taken;  // (the last codon may lack bases)
  int32_t identical = 0;
  int32_t shifts = 0;  // runs of frame-shift columns
};

struct Pair {
  const SeqRec& query;
  const UTvector<int8_t>& dna;
  const SeqRec& target;
};

int32_t bases_of(FrameStep step) {
  switch (step) {
    case FrameStep::NO_CODON:
      return 0;
    case FrameStep::FRAME_SHIFT:
      return 1;
    default:
      return CODON;
  }
}

char marker_of(int8_t query_code, int8_t target_code, const ScoreMatrix& matrix) {
  if (query_code == target_code) return '*';
  return matrix.pairscore[query_code][target_code] > 0 ? '.' : ' ';
}

FrameLines write_out(const FramePath& path, const Pair& pair, const ScoreMatrix& matrix, const Params* p) {
  FrameLines lines;
  int32_t row = path.first_row;
  int32_t base = path.first_base;
  bool shifting = false;
  for (const FrameStep step : path.steps) {
    const bool shift = step == FrameStep::FRAME_SHIFT;
    const bool residue = step == FrameStep::MATCH || step == FrameStep::NO_CODON;
    const bool codon = step == FrameStep::MATCH || step == FrameStep::NO_RESIDUE;
    const int8_t target_code = residue ? pair.target.seq[row] : int8_t{0};
    const int8_t query_code = codon ? pair.query.seq[base] : int8_t{0};
    char marker = shift ? p->FGAP_CHARACTER : ' ';
    if (step == FrameStep::MATCH) marker = marker_of(query_code, target_code, matrix);
    lines.protein += residue ? residue_letter(matrix, target_code) : p->GAP_CHARACTER;
    lines.markers += marker;
    lines.translated += codon   ? residue_letter(matrix, query_code)
                        : shift ? p->FGAP_CHARACTER
                                : p->GAP_CHARACTER;
    // Columns at the end of the sequence spell residues from single bases, without a whole codon behind them.
    const int32_t taken = std::clamp(pair.query.len - 1 - base, 0, bases_of(step));
    for (int32_t k = 0; k < CODON; ++k) {
      lines.bases[static_cast<std::size_t>(k)] +=
          k < taken ? static_cast<char>(pair.dna[static_cast<std::size_t>(base + k)]) : ' ';
    }
    lines.rows_taken.push_back(residue ? 1 : 0);
    lines.bases_taken.push_back(taken);
    lines.identical += step == FrameStep::MATCH && query_code == target_code ? 1 : 0;
    lines.shifts += shift && !shifting ? 1 : 0;
    shifting = shift;
    row += residue ? 1 : 0;
    base += taken;
  }
  return lines;
}

int32_t sum(const UTvector<int32_t>& taken, std::size_t from, std::size_t to) {
  int32_t total = 0;
  for (std::size_t k = from; k < to; ++k) total += taken[k];
  return total;
}

// Where a nucleotide stands in the file, whichever strand was searched.
int32_t place_in_file(int32_t base, const SeqRec& query, const Params* p) {
  return p->COMPLEMENT_QUERY != 0 ? query.len - 1 - base : base;
}

void print_letters(int32_t first, const UTstring& letters, std::size_t from, std::size_t to, int32_t last) {
  std::fprintf(std_out, "%7d ", first);
  std::fwrite(letters.data() + from, 1, to - from, std_out);
  std::fprintf(std_out, " %7d\n", last);
}

void print_blocks(const FrameLines& lines, const FramePath& path, const SeqRec& query, const Params* p) {
  int32_t row = path.first_row;
  int32_t base = path.first_base;
  const std::size_t length = lines.protein.size();
  const auto width = static_cast<std::size_t>(p->OUTPUT_LENGTH);
  for (std::size_t from = 0; from < length;) {
    const std::size_t to = from + std::min(width, length - from);
    const int32_t next_row = row + sum(lines.rows_taken, from, to);
    const int32_t next_base = base + sum(lines.bases_taken, from, to);
    const auto begin = static_cast<int32_t>(from);
    const auto end = static_cast<int32_t>(to);
    print_letters(row, lines.protein, from, to, next_row - 1);
    printbid(std_out, lines.markers, begin, end);
    print_letters(place_in_file(base, query, p), lines.translated, from, to,
                  place_in_file(next_base - 1, query, p));
    for (const UTstring& bases : lines.bases) printbid(std_out, bases, begin, end);
    std::fputc('\n', std_out);
    row = next_row;
    base = next_base;
    from = to;
  }
}

void print_figures(const FrameLines& lines, const FramePath& path, const Pair& pair,
                   const double* significance_opt, const Params* p) {
  std::fprintf(std_out, "# N: 1 Raw_Score: %d Query_Length: %d Target_Length: %d ",
               whole_score(path.score, p), residues(pair.query), residues(pair.target));
  if (significance_opt != nullptr) {
    std::fprintf(std_out, p->FIT_TYPE == 1 ? "Pvalue: %g" : "Evalue: %g", *significance_opt);
  }
  const std::size_t columns = lines.protein.size();
  const int32_t last_base = path.first_base + sum(lines.bases_taken, 0, columns) - 1;
  std::fprintf(std_out, "\n# Residues: %d-%d Nucleotides: %d-%d Identical: %d Frame_Shifts: %d\n",
               path.first_row, path.first_row + sum(lines.rows_taken, 0, columns) - 1,
               place_in_file(path.first_base, pair.query, p), place_in_file(last_base, pair.query, p),
               lines.identical, lines.shifts);
}

void print_path(const FramePath& path, const Pair& pair, const ScoreMatrix& matrix,
                const double* significance_opt, const Params* p) {
  if (static_cast<int64_t>(path.steps.size()) < p->MIN_LEN) return;
  if (significance_opt != nullptr && !(static_cast<double>(p->PROBCUT) >= *significance_opt)) return;
  const FrameLines lines = write_out(path, pair, matrix, p);
  print_figures(lines, path, pair, significance_opt, p);
  print_blocks(lines, path, pair.query, p);
  std::fputs("# End_N: 1\n", std_out);
}

}  // namespace

void print_frame_alignments(const SeqRec& query, const UTvector<int8_t>& dna, const ResultRec& results,
                            const ScoreMatrix& matrix, const LookupTable& table, const Params* p) {
  const int32_t shown = std::clamp(p->MAX_AOUT, 0, results.n);
  if (shown > 0) require_output_length(p);
  const int32_t li_pen = decode_mode(p->MODE).affine ? p->LI_PEN : p->LD_PEN;
  MoveFlags flags;
  for (int32_t rank = 1; rank <= shown; ++rank) {
    const int32_t hit = results.order[results.n - rank];
    const Pair pair = {query, dna, results.seqs[hit]};
    const bool aligned = results.scores[hit] > 0 && results.scores[hit] >= p->MIN_ASCORE;
    print_section_start(query, pair.target, rank, aligned ? 1 : 0, p);
    if (aligned) {
      const FramePath path = trace_frames(query.len, pair.target.seq, pair.target.len, table, p->LD_PEN,
                                          li_pen, p->FS_PEN, p->FSE_PEN, flags);
      const double* significance = results.significance;
      print_path(path, pair, matrix, significance == nullptr ? nullptr : significance + hit, p);
    }
    print_section_end(rank);
  }
}

}  // namespace zelvan
