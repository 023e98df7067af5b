#include "report/multiple_alignment.h"

#include <algorithm>
#include <cstdio>

#include "seq/alphabet.h"
#include "util/failure.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr std::size_t FIRST_ROWS = 10;
constexpr int32_t FRAGMENTS_AS_FASTA = 1;

// The name and place of one line of the alignment.
struct LineHead {
  const SeqRec* seq;
  double significance;
  int32_t start;
  int32_t end;
};

LineHead query_head(const AlignData& aldat) {
  return {aldat.query, 0.0, 1, residues(*aldat.query)};
}

LineHead row_head(const AlignRow& row) {
  return {row.seq, row.significance, row.start, row.end};
}

void print_head(FILE* stream, const LineHead& head, const Params* p) {
  UTpTITLEstring(stream, head.seq->id, p->SHOW_IDENT_WIDTH, head.seq->ilen);
  std::fprintf(stream, " %-9.3g %5d %5d %5d: ", head.significance, head.start, head.end, residues(*head.seq));
}

// Positions first .. first+count-1 as letters, and a newline.
void print_residues(FILE* stream, const int8_t* codes, int32_t first, int32_t count, const Params* p) {
  if (count > 0) {
    UTvector<char> letters(static_cast<std::size_t>(count));
    itoseq2(letters.data(), codes + first, count + 1, *p->matrix);
    std::fwrite(letters.data(), 1, letters.size(), stream);
  }
  std::fputc('\n', stream);
}

void print_block_heading(int32_t first, const Params* p) {
  std::fputs("#\n", std_out);
  UTpstring(std_out, "# ID", p->SHOW_IDENT_WIDTH);
  std::fprintf(std_out, " %s   Start   End   Len\n", p->PROB_TYPE != 0 ? "Evalue" : "Pvalue");
  UTpstring(std_out, "#   ", p->SHOW_IDENT_WIDTH);
  std::fprintf(std_out, "                             %-10d\n", first);
}

void print_blocks(const AlignData& aldat, const Params* p) {
  const int64_t width = p->MULTIPLE_OUTPUT_LENGTH;
  const int64_t terminator = aldat.query->len - 1;
  for (int64_t at = 1; at < terminator; at += width) {
    const auto first = static_cast<int32_t>(at);
    const auto count = static_cast<int32_t>(std::min(at + width - 1, terminator) - at);
    print_block_heading(first, p);
    print_head(std_out, query_head(aldat), p);
    print_residues(std_out, aldat.query->seq, first, count, p);
    for (const AlignRow& row : aldat.rows) {
      print_head(std_out, row_head(row), p);
      print_residues(std_out, row.aligned.data(), first, count, p);
    }
  }
}

void print_block_file_head(FILE* stream, const LineHead& head, const Params* p) {
  std::fputc('>', stream);
  print_head(stream, head, p);
  std::fprintf(stream, "%s\n", head.seq->title);
}

void print_block_file(const AlignData& aldat, const Params* p) {
  FILE* stream = p->BLOCK_FILE_OUT.stream;
  if (p->PRINT_BLOCK_FILE != 1 || stream == nullptr) return;
  std::fprintf(stream, "# Alignment from izelvan iteration:%d\n", p->ITERATION);
  std::fputs("# The first sequence is the query - all other sequences may be fragments\n#\n", stream);
  print_block_file_head(stream, query_head(aldat), p);
  for (const AlignRow& row : aldat.rows) print_block_file_head(stream, row_head(row), p);
  std::fprintf(stream, "*Iteration: %d\n", p->ITERATION);

  UTvector<int8_t> column(aldat.rows.size() + 1);
  for (int32_t k = 1; k < aldat.query->len - 1; ++k) {
    column[0] = aldat.query->seq[k];
    for (std::size_t r = 0; r < aldat.rows.size(); ++r) {
      column[r + 1] = aldat.rows[r].aligned[static_cast<std::size_t>(k)];
    }
    print_residues(stream, column.data(), 0, static_cast<int32_t>(column.size()), p);
  }
  std::fputs("*\n", stream);
}

void print_fragment(FILE* stream, const LineHead& head, const Params* p) {
  const SeqRec& seq = *head.seq;
  std::fprintf(stream, ">%s(%d-%d:%d)", seq.id, head.start, head.end, residues(seq));
  std::fprintf(stream, p->FRAG_FILE_FORMAT == FRAGMENTS_AS_FASTA ? " %s\n" : "\n%s\n", seq.title);
  print_residues(stream, seq.seq, head.start, head.end - head.start + 1, p);
  if (p->FRAG_FILE_FORMAT != FRAGMENTS_AS_FASTA) std::fputs("*\n", stream);
}

}  // namespace

AlignData initialise_aldat(const SeqRec& query) {
  AlignData aldat;
  aldat.query = &query;
  return aldat;
}

AlignRow& addseq_to_aldat(AlignData& aldat, const SeqRec& seq, int8_t fill) {
  if (aldat.rows.empty()) aldat.rows.reserve(FIRST_ROWS);
  AlignRow& row = aldat.rows.emplace_back();
  row.aligned.assign(static_cast<std::size_t>(aldat.query->len), fill);
  row.aligned.back() = 0;
  row.seq = &seq;
  return row;
}

void print_multiple_alignment(const AlignData& aldat, const Params* p) {
  if (p->MULTIPLE_OUTPUT_LENGTH < 1) {
    UTend_input(std_err, "MULTIPLE_OUTPUT_LENGTH is %d: set it to the columns wanted in a block, 1 or more\n",
                p->MULTIPLE_OUTPUT_LENGTH);
  }
  std::fprintf(std_out, "# \n# Multiple alignment Start for iteration: %d\n", p->ITERATION);
  std::fprintf(std_out, "# Format: Simple\n# Residues_per_line: %d\n", p->OUTPUT_LENGTH);
  print_blocks(aldat, p);
  std::fprintf(std_out, "#\n# Multiple alignment End for iteration: %d\n#\n", p->ITERATION);
  print_block_file(aldat, p);
}

void print_frag_file(const AlignData& aldat, const Params* p) {
  FILE* stream = p->FRAG_FILE_OUT.stream;
  if (p->PRINT_FRAG_FILE != 1 || stream == nullptr) return;
  print_fragment(stream, query_head(aldat), p);
  for (const AlignRow& row : aldat.rows) print_fragment(stream, row_head(row), p);
}

void destroy_aldat(AlignData& aldat) {
  aldat = AlignData();
}

}  // namespace zelvan
