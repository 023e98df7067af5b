#include "bdb/database.h"

#include "util/index_sort.h"

namespace zelvan {

void load_database(Database& out_database, const ScoreMatrix& matrix, Params* p) {
  UTvector<SeqRec>* seqs;
  if (p->BDB_GIVEN == 0) {
    read_text_database(out_database.text, p->VERBOSE != 0, p);
    out_database.text_info = text_database_info(out_database.text, p);
    p->binfo = &out_database.text_info;
    seqs = &out_database.text.seqs;
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

UTvector<int32_t> length_order(const UTvector<SeqRec>& seqs) {
  const SeqRec* const first = seqs.data();
  return UTsorted_order(static_cast<int32_t>(seqs.size()),
                        [first](int32_t a, int32_t b) { return first[a].len < first[b].len; });
}

}  // namespace zelvan
