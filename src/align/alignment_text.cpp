#include "align/alignment_text.h"

#include <algorithm>
#include <cmath>

#include "seq/alphabet.h"
#include "util/failure.h"
#include "util/numbers.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

double log_length(const SeqRec& seq) {
  return std::log(static_cast<double>(residues(seq)));
}

// The path threshold of one hit, with LOG_SCORES scaled by the lengths.
int32_t printed_threshold(const RankedScan& scan, int32_t rank, int32_t shown, const Params* p) {
  const int32_t threshold = path_threshold(scan, rank, shown, p->DO_STATS == 2, p);
  if (p->LOG_SCORES == 0) return threshold;
  // Two lengths of 1 give NaN.
  const double ratio =
      log_length(scan.query) / log_length(scan.results.seqs[hit_at_rank(scan.results, rank)]);
  return UTtruncate(static_cast<double>(static_cast<float>(threshold)) / ratio);
}

// The line of figures above an alignment; without a significance it stays open.
void print_figures(std::size_t number, const PathRec& path, const SeqRec& query, const SeqRec& target,
                   double significance, const Params* p) {
  std::fprintf(std_out, "# N: %d Raw_Score: %d Query_Length: %d Target_Length: %d ",
               static_cast<int32_t>(number), path.best / p->PRECISION, residues(query), residues(target));
  if (p->LOG_SCORES == 1) {
    const double score = static_cast<double>(static_cast<float>(path.best));
    std::fprintf(std_out, "ln()_Score: %d\n",
                 UTtruncate(score * log_length(query) / log_length(target) / p->PRECISION));
  } else if (p->DO_STATS == 2) {
    std::fprintf(std_out, p->PROB_TYPE == 0 ? "Pvalue: %g\n" : "Evalue: %g\n", significance);
  }
}

void print_blocks(const PathRec& path, const UTstring& markers, const AlignedRows& letters, const Params* p) {
  const char* query = reinterpret_cast<const char*>(letters.query.data());
  const char* target = reinterpret_cast<const char*>(letters.target.data());
  int32_t query_at = path.start_i;
  int32_t target_at = path.start_j;
  for (int32_t pos = 0; pos < letters.length;) {
    const int32_t end = pos + std::min(p->OUTPUT_LENGTH, letters.length - pos);
    int32_t last = 0;
    printbid(std_out, markers, pos, end);
    printbit(std_out, query_at, last, query, pos, end);
    query_at = last + 1;
    printbit(std_out, target_at, last, target, pos, end);
    target_at = last + 1;
    std::fputc('\n', std_out);
    pos = end;
  }
}

}  // namespace

void print_alignments_pp(const RankedScan& scan, TracedHits& traced, Params* p) {
  const int32_t shown = std::clamp(p->MAX_AOUT, 0, scan.results.n);
  if (shown > 0) require_output_length(p);
  for (int32_t rank = 0; rank < shown; ++rank) {
    const int32_t threshold = printed_threshold(scan, rank, shown, p);
    const UTvector<PathRec> paths = align_hit(traced, scan, rank, threshold, p);
    const SeqRec& target = scan.results.seqs[hit_at_rank(scan.results, rank)];
    print_section_start(scan.query, target, rank + 1, paths.size(), p);
    printal2(scan, target, paths, traced, p);
    print_section_end(rank + 1);
    keep_hit(traced);
  }
}

void printal2(const RankedScan& scan, const SeqRec& target, const UTvector<PathRec>& paths,
              TracedHits& traced, const Params* p) {
  AlignedRows& rows = traced.rows;
  for (std::size_t k = 0; k < paths.size(); ++k) {
    const PathRec& path = paths[k];
    double significance = 0;
    if (!trace_hit_path(traced, scan, path, significance, p)) continue;
    // NaN is not shown either.
    if (p->DO_STATS == 2 && !(static_cast<double>(p->PROBCUT) >= significance)) continue;
    int32_t identical = 0;
    const UTstring markers = sdentq(rows.query.data(), rows.target.data(), rows.length, scan.matrix.pairscore,
                                    '*', '.', identical);
    itoseq(rows.query.data(), rows.length + 1, scan.matrix);
    itoseq(rows.target.data(), rows.length + 1, scan.matrix);
    print_figures(k + 1, path, scan.query, target, significance, p);
    print_blocks(path, markers, rows, p);
    std::fprintf(std_out, "# End_N: %d\n", static_cast<int32_t>(k + 1));
  }
}

void print_section_start(const SeqRec& query, const SeqRec& target, int32_t rank, std::size_t npaths,
                         const Params* p) {
  std::fprintf(std_out, "\n# Start_Alignments_Rank: %d\n# Query: %s Target: %s Number_of_Alignments: %d\n",
               rank, query.id, target.id, static_cast<int32_t>(npaths));
  std::fputs("# Target_Title: ", std_out);
  UTpstring(std_out, target.title, p->SHOW_TITLES_WIDTH);
  std::fputc('\n', std_out);
}

void print_section_end(int32_t rank) {
  std::fprintf(std_out, "# End_Alignments_Rank: %d\n", rank);
}

void require_output_length(const Params* p) {
  if (p->OUTPUT_LENGTH >= 1) return;
  UTend_input(std_err, "OUTPUT_LENGTH is %d: set it to the columns wanted in a line, 1 or more\n",
              p->OUTPUT_LENGTH);
}

UTstring sdentq(const int8_t* query, const int8_t* target, int32_t length, const Table<int32_t>& pairscore,
                char identity, char similarity, int32_t& out_identical) {
  UTstring markers(static_cast<std::size_t>(length), ' ');
  out_identical = 0;
  for (int32_t k = 0; k < length; ++k) {
    char& marker = markers[static_cast<std::size_t>(k)];
    if (query[k] == target[k]) {
      marker = identity;
      ++out_identical;
    } else if (pairscore[query[k]][target[k]] > 0) {
      marker = similarity;
    }
  }
  return markers;
}

void printbid(FILE* stream, const UTstring& markers, int32_t from, int32_t to) {
  std::fputs("        ", stream);
  std::fwrite(markers.data() + from, 1, static_cast<std::size_t>(to - from), stream);
  std::fputc('\n', stream);
}

void printbit(FILE* stream, int32_t start, int32_t& out_end, const char* letters, int32_t from, int32_t to) {
  const auto gaps = std::count_if(letters + from, letters + to, [](char c) { return c == ' ' || c == '^'; });
  out_end = start + (to - from) - static_cast<int32_t>(gaps) - 1;
  std::fprintf(stream, "%7d ", start);
  std::fwrite(letters + from, 1, static_cast<std::size_t>(to - from), stream);
  std::fprintf(stream, " %7d\n", out_end);
}

}  // namespace zelvan
