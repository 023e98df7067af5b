#include "seq/matrix_file.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "util/failure.h"
#include "util/line_reader.h"
#include "util/streams.h"
#include "util/text.h"
#include "util/text_start.h"

namespace zelvan {
namespace {

constexpr int32_t NSPECIAL = 4;     // gap, F-gap, I-gap and stop close every alphabet
constexpr int32_t MAX_CODES = 128;  // a code is an int8_t
constexpr const char* BLANKS = " \t\n";

void open_matrix(Params* p) {
  const UTstring path = UTcat({p->MATRIX_DIR, "/", p->MATRIX_FILE.name});
  UTfilerename(p->MATRIX_FILE, path.c_str());
  UTfileopen(p->MATRIX_FILE, "r", 1);
}

void close_matrix(Params* p) {
  UTfileclose(p->MATRIX_FILE, 0);
}

// The first line of the file, without a byte-order mark; false when there is none.
bool first_line(UTvector<char>& line, const Params* p) {
  if (!UTgetline(p->MATRIX_FILE.stream, line)) return false;
  UTrefuse_compressed(line.data(), std::strlen(line.data()), p->MATRIX_FILE.name.c_str(),
                      "> NEW_FILE, and -m NEW_FILE");
  UTskip_mark(line);
  return true;
}

// The score that a number of the file stands for, x PRECISION. Every sensible matrix stays far from the
// limits, but a score that wrapped would go unnoticed.
int32_t scaled_score(int64_t number, const Params* p) {
  const int64_t largest = INT32_MAX / std::max(std::abs(int64_t{p->PRECISION}), int64_t{1});
  if (number < -largest || number > largest) {
    UTend_input(std_err, "Score out of range in matrix file: %s\nNo score x PRECISION (%d) may exceed %d\n",
                p->MATRIX_FILE.name.c_str(), p->PRECISION, INT32_MAX);
  }
  return static_cast<int32_t>(number * p->PRECISION);
}

// Completes the alphabet by the special characters and builds the table of codes.
// In     letters: as in the file
// Out    indx, inlen, xindex; pairscore all zero
void set_alphabet(ScoreMatrix& out_matrix, const UTstring& letters, const Params* p) {
  UTstring& indx = out_matrix.indx;
  indx = letters;
  indx += {p->GAP_CHARACTER, p->FGAP_CHARACTER, p->IGAP_CHARACTER, p->STOP_CHARACTER};
  if (indx.size() > static_cast<std::size_t>(MAX_CODES)) {
    UTend_input(std_err, "Matrix file: %s\nToo many residue letters: %zu (at most %d)\n",
                p->MATRIX_FILE.name.c_str(), letters.size(), MAX_CODES - NSPECIAL);
  }
  for (const char letter : indx) {
    if (letter < ' ' || letter > '~') {
      UTend_input(std_err,
                  "Matrix file: %s\nUnusable character (byte %d) in the matrix alphabet\n"
                  "Residue letters and gap and stop characters must be printable ASCII characters\n",
                  p->MATRIX_FILE.name.c_str(), static_cast<unsigned char>(letter));
    }
  }
  const std::size_t unknown = indx.rfind('X');
  if (unknown == UTstring::npos) {
    UTend_input(std_err, "Pairscore Matrix MUST include an X character\nIndex:%s\n", indx.c_str());
  }
  out_matrix.inlen = static_cast<int32_t>(indx.size());
  out_matrix.xindex.fill(static_cast<int8_t>(unknown));
  for (std::size_t code = 0; code < indx.size(); ++code) {
    out_matrix.xindex[static_cast<unsigned char>(indx[code])] = static_cast<int8_t>(code);
  }
  out_matrix.pairscore = make_table<int32_t>(out_matrix.inlen, out_matrix.inlen, 0);
}

UTstring without_newline(const UTvector<char>& line) {
  UTstring text(line.data());
  if (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

[[noreturn]] void missing_line(const char* message, const Params* p) {
  error(message, 0);
  UTend_input(std_err, "File:%s\n", p->MATRIX_FILE.name.c_str());
}

// The header line of an NCBI matrix: the first that begins with a blank, below at least one "#" line. Returns
// its letters; blanks and the stop column's "*" are none.
UTstring ncbi_letters(UTvector<char>& line, const Params* p) {
  FILE* const stream = p->MATRIX_FILE.stream;
  const char* const name = p->MATRIX_FILE.name.c_str();
  if (!first_line(line, p) || line[0] != '#') {
    UTend_input(std_err,
                "Matrix file: %s\n"
                "For an NCBI format matrix file I expect a # in the first column of the first line\n"
                "Are you sure this file is NCBI format???\n"
                "Look at MATRIX_FILE command\n",
                name);
  }
  do {
    if (!UTgetline(stream, line)) {
      UTend_input(std_err, "Matrix file: %s\nNo line of residue letters found: it must begin with a blank\n",
                  name);
    }
  } while (line[0] != ' ');
  UTstring letters(line.data());
  for (const char unwanted : {' ', '\t', '\n', '*'}) UTremovechar2(letters, unwanted);
  return letters;
}

// One row of an NCBI matrix: its letter, then n scores. A token that is not a number reads as 0.
void read_ncbi_row(int32_t* out_scores, int32_t n, int32_t row, const char* line, const Params* p) {
  const char* at = line + std::strspn(line, BLANKS);
  at += std::strcspn(at, BLANKS);
  for (int32_t j = 0; j < n; ++j) {
    at += std::strspn(at, BLANKS);
    if (*at == '\0') {
      UTend_input(std_err, "Too few scores in matrix file: %s\nRow %d has %d of %d\n",
                  p->MATRIX_FILE.name.c_str(), row + 1, j, n);
    }
    out_scores[j] = scaled_score(std::strtol(at, nullptr, 10), p);
    at += std::strcspn(at, BLANKS);
  }
}

}  // namespace

void getmat_pir(ScoreMatrix& out_matrix, Params* p) {
  open_matrix(p);
  FILE* const stream = p->MATRIX_FILE.stream;
  UTvector<char> line = UTlinebuffer(static_cast<std::size_t>(p->LINE_BUFFER_LEN), "getmat_pir");

  if (!first_line(line, p)) missing_line("Missing Title line in matrix file", p);
  if (line[0] == '#') {
    UTend_input(std_err,
                "Matrix file: %s\n"
                "This does not look like a PIR format matrix file\n"
                "I don't expect to see a # in the first column\n"
                "Are you sure it is not an NCBI format file???\n"
                "If it is NCBI, then set MATRIX_TYPE to 1\n",
                p->MATRIX_FILE.name.c_str());
  }
  out_matrix.title = without_newline(line);
  if (!UTgetline(stream, line)) missing_line("Missing index line in matrix file", p);
  set_alphabet(out_matrix, without_newline(line), p);

  const int32_t n = out_matrix.inlen - NSPECIAL;
  for (int32_t i = 0; i < n; ++i) {
    for (int32_t j = 0; j < n; ++j) {
      char token[32];
      char* token_end = token;
      const bool present = std::fscanf(stream, "%31s", token) == 1;
      const long number = present ? std::strtol(token, &token_end, 10) : 0;
      if (!present || token_end == token || *token_end != '\0') {
        UTend_input(std_err, "%s in matrix file: %s\nRow %d, column %d of %d rows and columns\n",
                    present ? "Not a whole number" : "Too few scores", p->MATRIX_FILE.name.c_str(), i + 1,
                    j + 1, n);
      }
      out_matrix.pairscore[i][j] = scaled_score(number, p);
    }
  }
  close_matrix(p);
}

void getmat_ncbi(ScoreMatrix& out_matrix, Params* p) {
  open_matrix(p);
  UTvector<char> line = UTlinebuffer(static_cast<std::size_t>(p->LINE_BUFFER_LEN), "getmat_ncbi");
  out_matrix.title = "NCBI Matrix - see file for type";
  set_alphabet(out_matrix, ncbi_letters(line, p), p);

  const int32_t n = out_matrix.inlen - NSPECIAL;
  for (int32_t i = 0; i < n; ++i) {
    if (!UTgetline(p->MATRIX_FILE.stream, line)) {
      UTend_input(std_err, "Premature end to matrix file at line %d\n", i);
    }
    read_ncbi_row(out_matrix.pairscore[i], n, i, line.data(), p);
    if (p->VERBOSE > 10) std::fputc('\n', std_err);
  }
  close_matrix(p);
}

}  // namespace zelvan
