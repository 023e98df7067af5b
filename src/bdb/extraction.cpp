#include "bdb/extraction.h"

#include <algorithm>

#include "bdb/database.h"
#include "bdb/identifiers.h"
#include "bdb/sequence_writer.h"
#include "driver/progress.h"
#include "seq/alphabet.h"
#include "seq/sequence_file.h"
#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

void close_extract_file(Params* p) {
  UTfilewritten(p->EXTRACT_FILE);
  UTfileclose(p->EXTRACT_FILE, 1);
}

}  // namespace

void subset_db(Params* p) {
  if (p->NSUBSET < 1) {
    UTend_input(std_err, "NSUBSET is %d: set it to the number of sequences that you want (1 or more)\n",
                p->NSUBSET);
  }
  TextDatabase database;
  read_text_database(database, false, p);
  require_whole(database, p);
  const auto n = static_cast<int32_t>(database.seqs.size());
  if (n == 0) UTend_input(std_err, "%s has no sequence to choose from\n", p->DB_FILE.name.c_str());
  const int32_t step = n / p->NSUBSET;
  if (step == 0) {
    UTend_input(std_err, "NSUBSET is %d, but %s has only %d sequences: set NSUBSET to %d or less\n",
                p->NSUBSET, p->DB_FILE.name.c_str(), n, n);
  }
  const UTvector<int32_t> order = length_order(database.seqs);
  for (int64_t at = n - 1; at > 0; at -= step) {
    const SeqRec& s = database.seqs[static_cast<std::size_t>(order[static_cast<std::size_t>(at)])];
    std::fprintf(std_out, ">%s %s\n", s.id, s.title);
    std::fwrite(s.seq + 1, 1, static_cast<std::size_t>(s.len) - 2, std_out);
    std::fputc('\n', std_out);
  }
}

void extract_seqs(const SeqRec* seqs, int32_t n, const int32_t* order, const ScoreMatrix& matrix, Params* p) {
  if (p->EXTRACT_SEQ < 1) return;
  UTfileopen(p->EXTRACT_FILE, "w", 1);
  const int64_t bound = std::max(static_cast<int64_t>(n) - p->EXTRACT_SEQ + 1, int64_t{-1});
  for (int64_t at = n - 1; at > bound; --at) {
    save_sequence(p->EXTRACT_FILE.stream, seqs[order[at]], matrix, p);
  }
  close_extract_file(p);
}

void ex1(Params* p) {
  if (p->EXTRACT_SEQ < 1) {
    UTend_input(std_err, "EXTRACT_SEQ is %d: set it to the number of list lines to read (1 or more)\n",
                p->EXTRACT_SEQ);
  }
  UTfileopen(p->EXTRACT_FILE, "w", 1);
  progress("Getting matrix\n", p);
  const ScoreMatrix& matrix = *getmat(p);
  Database database;
  load_database(database, matrix, p);
  require_whole(database.text, p);
  if (!stored_as_codes(p)) {
    progress("Converting database sequences\n", p);
    encode_sequences(database.seqs, database.n, matrix);
  }
  shsort(database.n, database.seqs);
  for (const UTstring& id : ReadIdListFromScanFile(p->STDIN, p)) {
    const SeqRec* found = findid(database.seqs, database.n, id.c_str());
    if (found == nullptr) {
      std::fprintf(std_err,
                   "Warning: %s is not in the database, skipped (identifiers of a score list are cut to "
                   "SHOW_IDENT_WIDTH)\n",
                   id.c_str());
      continue;
    }
    save_sequence(p->EXTRACT_FILE.stream, *found, matrix, p);
  }
  close_extract_file(p);
  p->binfo = nullptr;
}

}  // namespace zelvan
