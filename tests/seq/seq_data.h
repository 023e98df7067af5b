// What the tests of this folder share: records as plain texts, and the settings of a run.
#pragma once

#include <string>
#include <vector>

#include "seq/sequence.h"
#include "support/settings.h"

namespace zelvan {

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
  set_defaults(&p);
  set_keys(p, "MAX_NSEQ 1000 MAX_SEQ_LEN 10000000 QSEQ_FORMAT 1");
  return p;
}

}  // namespace zelvan
