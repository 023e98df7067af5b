#include "align/lookup.h"

#include <algorithm>

namespace zelvan {
namespace {

void end_line(FILE* stream) {
  std::fputc('\n', stream);
  std::fflush(stream);
}

// A line with the alphabet, then one line per position `first` .. len-2 with every entry divided by `unit`.
void print_table(const char* label, int32_t first, int32_t len, const LookupTable& table,
                 const ScoreMatrix& matrix, int32_t width, int32_t unit, FILE* stream) {
  std::fputs(label, stream);
  for (const char letter : matrix.indx) std::fprintf(stream, "%*c", width, letter);
  end_line(stream);
  for (int32_t i = first; i <= len - 2; ++i) {
    std::fprintf(stream, "%4d:", i);
    for (int32_t c = 0; c < matrix.inlen; ++c) std::fprintf(stream, "%*d", width, table[c][i] / unit);
    end_line(stream);
  }
}

}  // namespace

LookupTable mlook(const int8_t* query, int32_t len, const ScoreMatrix& matrix) {
  LookupTable table = simple_look(len, matrix);
  for (int32_t i = 0; i <= len - 2; ++i) {
    const int32_t* scores = matrix.pairscore[query[i]];
    for (int32_t c = 0; c < matrix.inlen; ++c) table[c][i] = scores[c];
  }
  return table;
}

LookupTable mlookgap(const int8_t* query, int32_t len, const ScoreMatrix& matrix, int32_t ld_pen,
                     int32_t li_pen, const Params* p) {
  LookupTable table = mlook(query, len, matrix);
  const auto fill = [&](char gap_character, int32_t penalty) {
    std::fill_n(table[residue_code(matrix, gap_character)], len - 1, penalty);
  };
  fill(p->IGAP_CHARACTER, li_pen);
  fill(p->GAP_CHARACTER, ld_pen);
  return table;
}

LookupTable simple_look(int32_t len, const ScoreMatrix& matrix) {
  return make_table<int32_t>(matrix.inlen, len, 0);
}

void FreeLookup(LookupTable& table) {
  table = LookupTable();
}

void PrintLookup2(int32_t len, const LookupTable& table, const ScoreMatrix& matrix, FILE* stream,
                  const Params* p) {
  print_table("    ", 0, len, table, matrix, 3, p->PRECISION, stream);
}

void PrintLookup3(int32_t len, const LookupTable& table, const ScoreMatrix& matrix, FILE* stream) {
  print_table("Posn:", 1, len, table, matrix, 4, 1, stream);
}

void PrintLookup4(int32_t len, const LookupTable& table, const ScoreMatrix& matrix, FILE* stream,
                  const Params* p) {
  print_table("Posn:", 1, len, table, matrix, 4, p->PRECISION, stream);
}

}  // namespace zelvan
