#include "bdb/builder.h"

#include <cstdint>
#include <limits>
#include <numeric>

#include "bdb/database.h"
#include "bdb/index_record.h"
#include "bdb/pending_files.h"
#include "driver/progress.h"
#include "seq/alphabet.h"
#include "seq/database_info.h"
#include "seq/matrix.h"
#include "seq/sequence_file.h"
#include "util/failure.h"
#include "util/streams.h"
#include "util/text.h"
#include "util/timing.h"

namespace zelvan {
namespace {

// The builder shows its times when TIME is exactly 1.
void show_build_time(const char* label, const Params* p) {
  if (p->TIME != 1) return;
  std::fputs(label, std_err);
  UT_show_times(std_err, 1);
}

void put_int(const PendingDatabase& pending, int32_t value) {
  put(pending, pending.index, &value, sizeof value);
}

// A length and that many bytes of a text; with its terminator when the length counts it.
void put_text(const PendingDatabase& pending, int32_t length, const UTstring& text) {
  put_int(pending, length);
  put(pending, pending.index, text.c_str(), static_cast<std::size_t>(length));
}

// The numbers of the sequences in the order in which they are stored.
UTvector<int32_t> stored_order(const UTvector<SeqRec>& seqs, const Params* p) {
  if (p->DO_SORT == 1) return length_order(seqs);
  UTvector<int32_t> order(seqs.size());
  std::iota(order.begin(), order.end(), 0);
  return order;
}

BdbInfo describe(const TextDatabase& database, const ScoreMatrix& matrix, const Params* p) {
  int64_t characters = 0;
  for (const SeqRec& s : database.seqs) {
    characters += static_cast<int64_t>(s.ilen) + 1 + s.tlen + 1 + s.len;
  }
  if (constexpr int64_t most = std::numeric_limits<int32_t>::max(); characters > most) {
    const int64_t parts = characters / most + 1;
    UTend_input(std_err,
                "Database %s is too large: %lld characters of identifiers, titles and residues (> %lld)\n"
                "Split it at \">\" lines into %lld files of about the same size, build a database of each "
                "and search them one by one\n",
                p->DB_FILE.name.c_str(), static_cast<long long>(characters), static_cast<long long>(most),
                static_cast<long long>(parts));
  }
  BdbInfo info;
  info.index_flag = p->APPLY_INDEX;
  info.index_length = matrix.inlen - 3;
  info.index = matrix.indx.substr(0, static_cast<std::size_t>(info.index_length));
  info.nseq = static_cast<int32_t>(database.seqs.size());
  info.nres = static_cast<int32_t>(database.nres);
  info.totchar = static_cast<int32_t>(characters);
  info.date = UTlocaltime();
  info.date_length = static_cast<int32_t>(info.date.size()) + 1;
  info.name = p->DB_FILE.name;
  info.name_length = static_cast<int32_t>(info.name.size()) + 1;
  return info;
}

void write_header(const PendingDatabase& pending, const BdbInfo& info, const Params* p) {
  if (p->VERBOSE != 0) {
    std::fprintf(std_err, "Total characters to write: %d\nWriting headers\n", info.totchar);
  }
  put_int(pending, info.index_flag);
  put_text(pending, info.index_length, info.index);
  put_int(pending, info.nseq);
  put_int(pending, info.nres);
  put_int(pending, info.totchar);
  put_text(pending, info.date_length, info.date);
  put_text(pending, info.name_length, info.name);
  if (p->VERBOSE > 10) {
    std::fprintf(std_err, "p->DB_FILE->name:%s\nLength of p->DB_FILE->name: %d\n", info.name.c_str(),
                 info.name_length);
  }
}

// Returns the bytes of the sequence file.
int32_t write_sequences(const PendingDatabase& pending, const UTvector<SeqRec>& seqs,
                        const UTvector<int32_t>& order) {
  int32_t at = 0;
  for (const int32_t number : order) {
    const SeqRec& s = seqs[static_cast<std::size_t>(number)];
    IndexRecord record;
    record.id_at = at;
    record.ilen = s.ilen;
    record.title_at = record.id_at + s.ilen + 1;
    record.tlen = s.tlen;
    record.seq_at = record.title_at + s.tlen + 1;
    record.len = s.len;
    put(pending, pending.index, &record, sizeof record);
    put(pending, pending.sequences, s.id, static_cast<std::size_t>(s.ilen) + 1);
    put(pending, pending.sequences, s.title, static_cast<std::size_t>(s.tlen) + 1);
    put(pending, pending.sequences, s.seq, static_cast<std::size_t>(s.len));
    at = record.seq_at + s.len;
  }
  return at;
}

// The two names follow from what stood before BDB_ROOT, which is easily not the folder that was meant.
void tell_where(const BdbInfo& info, const Params* p) {
  std::fprintf(std_err, "Wrote %s and %s: %d sequences, %d residues\n", p->BDB_INDEX_FILE.name.c_str(),
               p->BDB_SEQ_FILE.name.c_str(), info.nseq, info.nres);
  if (p->BDB_GIVEN != 0 && p->BDB_INDEX_FILE.name != UTcat({p->DB_DIR, "/", p->BDB_ROOT, ".bix"})) {
    std::fprintf(std_err, "DB_DIR %s did not count, as it stands behind BDB_ROOT: give it before\n",
                 p->DB_DIR.c_str());
  }
}

}  // namespace

void makedb(Params* p) {
  if (p->TIME == 1) UT_init_times();
  std::fputs("Getting matrix\n", std_err);  // deliberately whatever VERBOSE is
  const ScoreMatrix& matrix = *getmat(p);
  TextDatabase database;
  read_text_database(database, p->VERBOSE != 0, p);
  require_whole(database, p);
  show_build_time("Have read database\n", p);
  if (p->APPLY_INDEX == 1) {
    progress("Indexing sequence data\n", p);
    encode_sequences(database.seqs.data(), static_cast<int32_t>(database.seqs.size()), matrix);
  }
  show_build_time("Time to index sequences\n", p);
  const UTvector<int32_t> order = stored_order(database.seqs, p);
  const BdbInfo info = describe(database, matrix, p);

  PendingDatabase pending = prepare_files(p->BDB_INDEX_FILE.name, p->BDB_SEQ_FILE.name);
  progress("Opening Index file\n", p);
  open_pending(pending, pending.index);
  progress("Opening database file\n", p);
  open_pending(pending, pending.sequences);
  progress("Counting characters to write to .sq file\n", p);
  write_header(pending, info, p);
  progress("Writing index and .sq files\n", p);
  const int32_t written = write_sequences(pending, database.seqs, order);
  if (written != info.totchar) {
    discard(pending);
    UTend_input(std_err, "Number of characters does not match, totchar = %d, pos = %d\n", info.totchar,
                written);
  }
  publish(pending);
  tell_where(info, p);
  show_build_time("", p);
}

}  // namespace zelvan
