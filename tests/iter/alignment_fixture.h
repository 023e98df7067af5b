// Small matrices and alignments made by hand, for the tests of profile building.
#pragma once

#include <cstring>
#include <random>
#include <string>

#include "driver/params.h"
#include "report/multiple_alignment.h"
#include "seq/matrix.h"

namespace fixture {

// A matrix over `letters` and the four special characters " ^:!": special rows and columns 0, the stop's
// `stop`, both x PRECISION; the caller fills in the scores and then calls set_extremes.
inline ScoreMatrix matrix_of(const std::string& letters, int32_t stop = -3000) {
  ScoreMatrix m;
  m.indx = (letters + " ^:!").c_str();
  m.inlen = static_cast<int32_t>(m.indx.size());
  m.xindex.fill(static_cast<int8_t>(letters.find('X')));
  for (int32_t k = 0; k < m.inlen; ++k) {
    m.xindex[static_cast<std::size_t>(m.indx[static_cast<std::size_t>(k)])] = static_cast<int8_t>(k);
  }
  m.pairscore = make_table<int32_t>(m.inlen, m.inlen, 0);
  for (int32_t k = 0; k < m.inlen; ++k) {
    m.pairscore[k][m.inlen - 1] = m.pairscore[m.inlen - 1][k] = stop;
  }
  m.dbcount.assign(static_cast<std::size_t>(m.inlen), 0);
  m.dbfreq.assign(static_cast<std::size_t>(m.inlen), 0.0);
  return m;
}

inline void set_extremes(ScoreMatrix& m) {
  m.minval = m.maxval = m.pairscore[1][1];
  for (const int32_t x : m.pairscore.cells) {
    m.minval = std::min(m.minval, x);
    m.maxval = std::max(m.maxval, x);
  }
}

// `match` on the diagonal of the letters, `mismatch` elsewhere.
inline ScoreMatrix identity_matrix(const std::string& letters, int32_t match, int32_t mismatch) {
  ScoreMatrix m = matrix_of(letters);
  const auto n = static_cast<int32_t>(letters.size());
  for (int32_t a = 0; a < n; ++a) {
    for (int32_t b = 0; b < n; ++b) m.pairscore[a][b] = a == b ? match : mismatch;
  }
  set_extremes(m);
  return m;
}

inline Params params(int32_t mode = 202) {
  Params p;
  p.GAP_CHARACTER = ' ';
  p.FGAP_CHARACTER = '^';
  p.IGAP_CHARACTER = ':';
  p.STOP_CHARACTER = '!';
  p.PRECISION = 100;
  p.MODE = mode;
  p.LD_PEN = 100;
  p.LI_PEN = 1100;
  p.PIDTHRESH = 1.0;
  p.POSWGTFAC = 1.0;
  p.PEN_FACTOR = 1.0;
  p.PROFILE_WEIGHT_METHOD = 2;
  return p;
}

// An encoded sequence with its pads.
struct Sequence {
  UTvector<int8_t> codes;
  SeqRec record;
  Sequence(const ScoreMatrix& m, const std::string& residues) {
    codes.push_back(residue_code(m, ' '));
    for (const char c : residues) codes.push_back(residue_code(m, c));
    codes.push_back(0);
    record.id = "s";
    record.title = "-";
    record.seq = codes.data();
    record.len = static_cast<int32_t>(codes.size());
  }
  Sequence(const Sequence&) = delete;
};

// Adds a row that covers query positions first .. first + text.size() - 1; '-' is a gap.
inline void add_row(AlignData& aldat, const ScoreMatrix& m, const std::string& text, int32_t first = 1) {
  AlignRow row;
  row.aligned.assign(static_cast<std::size_t>(aldat.query->len), residue_code(m, ' '));
  row.aligned.back() = 0;
  row.seq = aldat.query;
  row.qstart = first;
  row.qend = first + static_cast<int32_t>(text.size()) - 1;
  for (std::size_t k = 0; k < text.size(); ++k) {
    row.aligned[k + static_cast<std::size_t>(first)] = residue_code(m, text[k] == '-' ? ' ' : text[k]);
  }
  aldat.rows.push_back(row);
}

inline std::string random_text(std::mt19937& random, const std::string& letters, std::size_t length) {
  std::string text(length, ' ');
  for (char& c : text) c = letters[random() % letters.size()];
  return text;
}

}  // namespace fixture
