// The layout of the binary database, shared by builder and loader. All integers are 4-byte signed, in the
// byte order of the machine; nothing is padded or aligned.
//
// Index file, ".bix": the fields of BdbInfo in their order, the three texts as bytes of the stated lengths
// (index string without, date and name with a terminating zero), then one IndexRecord per sequence.
//
// Sequence file, ".bsq": per sequence, in the order of the records and without gaps, the identifier and its
// zero byte, the title and its zero byte, and the residue buffer as SeqRec holds it.
#pragma once

#include <cstdint>

namespace zelvan {

// Where one sequence lies. Positions are bytes from the start of the sequence file.
struct IndexRecord {
  int32_t id_at;
  int32_t ilen;      // identifier, without its zero byte
  int32_t title_at;  // id_at + ilen + 1
  int32_t tlen;      // title, without its zero byte
  int32_t seq_at;    // title_at + tlen + 1
  int32_t len;       // residue buffer: residues + 2
};
static_assert(sizeof(IndexRecord) == 24);

}  // namespace zelvan
