// What the tests of this folder share: records as plain texts, and the settings of a run.
#pragma once

#include <string>
#include <vector>

#include "driver/params.h"
#include "seq/matrix.h"
#include "seq/sequence.h"
#include "support/capture.h"
#include "util/streams.h"

struct Record {
  std::string id;
  std::string title;
  std::string residues;
  bool operator==(const Record&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Record& r) {
  return out << "{" << r.id << "|" << r.title << "|" << r.residues << "}";
}

// The texts of a record; pads and terminators that are not as promised show up in the residues.
inline Record texts_of(const SeqRec& r) {
  const std::string seq(reinterpret_cast<const char*>(r.seq), static_cast<std::size_t>(r.len));
  const bool pads_stand = seq.front() == ' ' && seq.back() == '\0';
  const bool terminated = r.id[r.ilen] == '\0' && r.title[r.tlen] == '\0';
  return {{r.id, static_cast<std::size_t>(r.ilen)},
          {r.title, static_cast<std::size_t>(r.tlen)},
          pads_stand && terminated ? seq.substr(1, seq.size() - 2) : "pads or terminators are wrong"};
}

inline SeqRec stored(SeqStore& store, const Record& r) {
  const auto size = [](const std::string& text) { return static_cast<int32_t>(text.size()); };
  return store_sequence(store, r.id.data(), size(r.id), r.title.data(), size(r.title), r.residues.data(),
                        size(r.residues));
}

inline Params settings() {
  Params p;
  p.MAX_NSEQ = 1000;
  p.MAX_SEQ_LEN = 10'000'000;
  p.QSEQ_FORMAT = 1;
  p.DB_FORMAT = 1;
  p.PRECISION = 100;
  p.GAP_CHARACTER = ' ';
  p.FGAP_CHARACTER = '^';
  p.IGAP_CHARACTER = ':';
  p.STOP_CHARACTER = '!';
  p.STOP_WEIGHT = -3000;
  p.STDERR = std_err;
  return p;
}

// The matrix of a file in the plain layout.
inline const ScoreMatrix& matrix_of(const char* text) {
  const TemporaryDirectory directory;
  directory.file("m", text);
  Params p = settings();
  p.MATRIX_DIR = directory.path.c_str();
  p.MATRIX_FILE.name = "m";
  p.MATRIX_FORMAT = 0;
  p.LINE_BUFFER_LEN = 1000;
  return *getmat(&p);
}
