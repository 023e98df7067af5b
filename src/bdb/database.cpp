#include "bdb/database.h"

#include <algorithm>

#include "seq/alphabet.h"
#include "seq/composition.h"
#include "util/index_sort.h"

namespace zelvan {
namespace {

// Where the residues of a sequence of volumes lie: behind its title.
int8_t* stored_residues(const SeqRec& s) {
  return reinterpret_cast<int8_t*>(const_cast<char*>(s.title + s.tlen + 1));
}

}  // namespace

void load_database(Database& out_database, const ScoreMatrix& matrix, Params* p) {
  UTvector<SeqRec>* seqs;
  if (p->BDB_GIVEN == 0) {
    read_text_database(out_database.text, p->VERBOSE != 0, p);
    out_database.text_info = text_database_info(out_database.text);
    p->binfo = &out_database.text_info;
    seqs = &out_database.text.seqs;
  } else if (is_volume_set(p->BDB_INDEX_FILE.name)) {
    open_volumes(out_database.volumes, matrix, p);
    seqs = &out_database.volumes.seqs;
  } else {
    loadbdb(out_database.binary, matrix, p);
    seqs = &out_database.binary.seqs;
  }
  out_database.seqs = seqs->data();
  out_database.n = static_cast<int32_t>(seqs->size());
}

bool stored_as_codes(const Params* p) {
  return p->BDB_GIVEN != 0 && p->APPLY_INDEX == 1;
}

void encode_database(Database& database, const ScoreMatrix& matrix, const Params* p,
                     const std::function<void(SeqRec&)>& translate) {
  if (!database.volumes.volumes.empty()) {
    database.read = volume_reader(database.volumes, matrix, translate);
  } else if (!stored_as_codes(p)) {
    encode_sequences(database.seqs, database.n, matrix);
  }
}

ScanTargets scan_targets(const Database& database) {
  return {database.seqs, database.n, database.read ? &database.read : nullptr};
}

void add_database_frequencies(const Database& database, Params* p) {
  const VolumeSet& set = database.volumes;
  if (set.volumes.empty()) {
    GetDBFreqs(database.seqs, database.n, p);
  } else {
    add_frequencies(
        set.info.index_flag == 1 ? set.list.counts : codes_from_letters(set.list.counts, *p->matrix), p);
  }
}

void lend_hits(Database& database, const UTvector<int32_t>& order, int64_t count) {
  if (!database.read) return;
  UTvector<int8_t> room;
  const auto n = static_cast<int64_t>(order.size());
  for (int64_t at = n - 1; at >= std::max(n - count, int64_t{0}); --at) {
    const int32_t k = order[static_cast<std::size_t>(at)];
    SeqRec& s = database.seqs[k];
    if (s.seq != stored_residues(s)) continue;  // lent already
    const int8_t* const codes = database.read(s, room);
    const auto* const letters = reinterpret_cast<const char*>(codes);
    const SeqRec copy = store_sequence(database.hits, "", 0, "", 0, letters + 1, residues(s));
    copy.seq[0] = codes[0];
    s.seq = copy.seq;
    database.lent.push_back(k);
  }
}

void return_hits(Database& database) {
  for (const int32_t k : database.lent) database.seqs[k].seq = stored_residues(database.seqs[k]);
  database.lent.clear();
  freeseqs(database.hits);
}

UTvector<int32_t> length_order(const SeqRec* seqs, int32_t n) {
  return UTorder_of_keys(n, [seqs](int32_t k) { return seqs[k].len; });
}

}  // namespace zelvan
