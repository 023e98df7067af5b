#include "bdb/extraction.h"

#include <algorithm>
#include <string_view>

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

// One sequence of a sample, letters as they were read.
// In     matrix_opt: of a binary database
void print_letters(const Database& database, const SeqRec& s, const ScoreMatrix* matrix_opt,
                   const Params* p) {
  UTvector<int8_t> letters = CopySeq(s.seq, s.len);
  if (matrix_opt != nullptr) {
    if (!database.volumes.volumes.empty()) check_volume_sequence(database.volumes, s, *matrix_opt);
    if (stored_as_codes(p)) itoseq(letters.data(), s.len, *matrix_opt);
  }
  std::fprintf(std_out, ">%s %s\n", s.id, s.title);
  std::fwrite(letters.data() + 1, 1, letters.size() - 2, std_out);
  std::fputc('\n', std_out);
}

// The sequences of volumes with one of these identifiers, of which there may be few, checked.
UTvector<SeqRec> with_identifiers(const Database& database, const UTvector<UTstring>& ids,
                                  const ScoreMatrix& matrix) {
  UTvector<std::string_view> wanted(ids.begin(), ids.end());
  std::sort(wanted.begin(), wanted.end());
  UTvector<SeqRec> found;
  for (int32_t k = 0; k < database.n; ++k) {
    const SeqRec& s = database.seqs[k];
    const std::string_view id(s.id, static_cast<std::size_t>(s.ilen));
    if (!std::binary_search(wanted.begin(), wanted.end(), id)) continue;
    check_volume_sequence(database.volumes, s, matrix);
    found.push_back(s);
  }
  return found;
}

}  // namespace

void subset_db(Params* p) {
  if (p->NSUBSET < 1) {
    UTend_input(std_err, "NSUBSET is %d: set it to the number of sequences that you want (1 or more)\n",
                p->NSUBSET);
  }
  Database database;
  const ScoreMatrix* matrix_opt = nullptr;
  const bool binary = p->BDB_GIVEN != 0 && !p->DB_FILE.given;
  if (binary) {
    matrix_opt = getmat(p);
    load_database(database, *matrix_opt, p);
  } else {
    read_text_database(database.text, false, p);
    require_whole(database.text, p);
    database.seqs = database.text.seqs.data();
    database.n = static_cast<int32_t>(database.text.seqs.size());
  }
  const char* const name = binary ? p->BDB_ROOT.c_str() : p->DB_FILE.name.c_str();
  const int32_t n = database.n;
  if (n == 0) UTend_input(std_err, "%s has no sequence to choose from\n", name);
  const int32_t step = n / p->NSUBSET;
  if (step == 0) {
    UTend_input(std_err, "NSUBSET is %d, but %s has only %d sequences: set NSUBSET to %d or less\n",
                p->NSUBSET, name, n, n);
  }
  const UTvector<int32_t> order = length_order(database.seqs, n);
  for (int64_t at = n - 1; at > 0; at -= step) {
    print_letters(database, database.seqs[order[static_cast<std::size_t>(at)]], matrix_opt, p);
  }
  p->binfo = nullptr;
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
  if (!stored_as_codes(p)) progress("Converting database sequences\n", p);
  encode_database(database, matrix, p);
  const bool volumes = !database.volumes.volumes.empty();
  if (!volumes) shsort(database.n, database.seqs);
  const UTvector<UTstring> ids = ReadIdListFromScanFile(p->STDIN, p);
  // Of volumes only what is wanted is sorted: the rest stays on the disk.
  UTvector<SeqRec> chosen;
  if (volumes) {
    chosen = with_identifiers(database, ids, matrix);
    shsort(static_cast<int32_t>(chosen.size()), chosen.data());
  }
  const SeqRec* const seqs = volumes ? chosen.data() : database.seqs;
  const int32_t n = volumes ? static_cast<int32_t>(chosen.size()) : database.n;
  UTvector<int8_t> room;
  for (const UTstring& id : ids) {
    const SeqRec* found = findid(seqs, n, id.c_str());
    if (found == nullptr) {
      std::fprintf(std_err,
                   "Warning: %s is not in the database, skipped (identifiers of a score list are cut to "
                   "SHOW_IDENT_WIDTH)\n",
                   id.c_str());
      continue;
    }
    SeqRec codes = *found;
    codes.seq = const_cast<int8_t*>(codes_of(scan_targets(database), *found, room));  // only read
    save_sequence(p->EXTRACT_FILE.stream, codes, matrix, p);
  }
  close_extract_file(p);
  p->binfo = nullptr;
}

}  // namespace zelvan
