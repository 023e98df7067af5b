// How a scan gets at the residues of a database. A database in memory holds codes when it is scanned; one
// that is mapped from its files stays as it is stored, and each sequence is made ready when its turn comes.
#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "seq/matrix.h"
#include "seq/sequence.h"
#include "util/memory.h"

namespace zelvan {

// Returns the codes of a record, laid out as SeqRec::seq: the record's own, or made in `room`, whose former
// contents do not matter. An empty one stands for the record's own.
// Ends   on residues that cannot be read as codes
using ReadCodes = std::function<const int8_t*(const SeqRec& record, UTvector<int8_t>& room)>;

// The sequences that a scan compares with.
struct ScanTargets {
  const SeqRec* seqs = nullptr;  // [n], not owned
  int32_t n = 0;
  const ReadCodes* read_opt = nullptr;  // not owned; null: seqs hold codes
};

// codes_of - the codes of a record, by `targets.read_opt` where there is one.
inline const int8_t* codes_of(const ScanTargets& targets, const SeqRec& record, UTvector<int8_t>& room) {
  return targets.read_opt != nullptr ? (*targets.read_opt)(record, room) : record.seq;
}

// The codes of two neighbouring letters, as they lie in memory.
using PairCodes = std::array<uint16_t, 65536>;

// make_pair_codes - seqtoi for pairs of any two bytes.
PairCodes make_pair_codes(const ScoreMatrix& matrix);

// encode_pairs - seqtoi, in place or from one buffer into another, two letters at a time.
// In     from[0..len-1], len >= 2: letters; from[len-1] is copied as it is
// Out    to[0..len-1]
void encode_pairs(const int8_t* from, int32_t len, const PairCodes& codes, int8_t* to);

}  // namespace zelvan
