#include "bdb/builder.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "bdb/database.h"
#include "bdb/index_header.h"
#include "bdb/pending_files.h"
#include "bdb/volume_builder.h"
#include "driver/progress.h"
#include "seq/alphabet.h"
#include "seq/database_info.h"
#include "seq/matrix.h"
#include "seq/sequence_file.h"
#include "seq/size_limit.h"
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

// The numbers of the sequences in the order in which they are stored.
UTvector<int32_t> stored_order(const UTvector<SeqRec>& seqs, const Params* p) {
  if (p->DO_SORT == 1) return length_order(seqs.data(), static_cast<int32_t>(seqs.size()));
  UTvector<int32_t> order(seqs.size());
  std::iota(order.begin(), order.end(), 0);
  return order;
}

void write_header(const PendingDatabase& pending, const BdbInfo& info, const Params* p) {
  if (p->VERBOSE != 0) {
    std::fprintf(std_err, "Total characters to write: %lld\nWriting headers\n",
                 static_cast<long long>(info.totchar));
  }
  const UTvector<char> bytes = header_bytes(info);
  put(pending, pending.index, bytes.data(), bytes.size());
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
    const IndexRecord record = record_at(at, s.ilen, s.tlen, s.len);
    put(pending, pending.index, &record, sizeof record);
    put(pending, pending.sequences, s.id, static_cast<std::size_t>(s.ilen) + 1);
    put(pending, pending.sequences, s.title, static_cast<std::size_t>(s.tlen) + 1);
    put(pending, pending.sequences, s.seq, static_cast<std::size_t>(s.len));
    at = record.seq_at + s.len;
  }
  return at;
}

// The names follow from what stood before BDB_ROOT, which is easily not the folder that was meant.
void tell_where(const Params* p) {
  if (p->BDB_GIVEN != 0 && p->BDB_INDEX_FILE.name != UTcat({p->DB_DIR, "/", p->BDB_ROOT, ".bix"})) {
    std::fprintf(std_err, "DB_DIR %s did not count, as it stands behind BDB_ROOT: give it before\n",
                 p->DB_DIR.c_str());
  }
}

// The text as far as it was read: whole, or the part since the spool was filled last.
struct Intake {
  TextDatabase text;
  int64_t characters = 0;  // of that part
  int64_t nseq = 0;        // of all parts
  Spool spool;             // open once the text is larger than one database
};

void fill_spool(Intake& intake, const ScoreMatrix& matrix, const Params* p) {
  if (intake.spool.pieces == nullptr) {
    progress("The database is too large for one binary database, volumes are made\n", p);
    intake.spool = open_spool(p);
  }
  UTvector<SeqRec>& seqs = intake.text.seqs;
  const auto n = static_cast<int32_t>(seqs.size());
  if (p->APPLY_INDEX == 1) encode_sequences(seqs.data(), n, matrix);
  add_to_spool(intake.spool, seqs.data(), n);
  seqs = UTvector<SeqRec>();
  freeseqs(intake.text.store);
  intake.characters = 0;
}

void read_text(Intake& intake, const ScoreMatrix& matrix, Params* p) {
  constexpr int64_t PART = int64_t{2} << 20;  // that is read between two fillings of the spool
  progress("Opening database\n", p);
  SeqReader reader = open_text_database(p);
  progress("Loading database\n", p);
  TextDatabase& text = intake.text;
  SeqRec record;
  while (get_db_seq(reader, text.store, record, p)) {
    if (intake.nseq++ >= p->MAX_NSEQ) end_too_many(p);
    text.seqs.push_back(record);
    text.nres += residues(record);
    intake.characters += int64_t{record.ilen} + 1 + record.tlen + 1 + record.len;
    const bool spooled = intake.spool.pieces != nullptr;
    if (intake.characters > (spooled ? std::min(PART, most_characters()) : most_characters()))
      fill_spool(intake, matrix, p);
  }
  text.cut_short = reader.unnamed;
  UTfileclose(p->DB_FILE, 0);
}

void write_database(Intake& intake, const ScoreMatrix& matrix, const Params* p) {
  const TextDatabase& database = intake.text;
  const UTvector<int32_t> order = stored_order(database.seqs, p);
  const BdbInfo info = describe_database(intake.nseq, database.nres, intake.characters, matrix, p);
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
    UTend_input(std_err, "Number of characters does not match, totchar = %d, pos = %d\n",
                static_cast<int32_t>(info.totchar), written);
  }
  publish(pending);
  std::fprintf(std_err, "Wrote %s and %s: %d sequences, %lld residues\n", p->BDB_INDEX_FILE.name.c_str(),
               p->BDB_SEQ_FILE.name.c_str(), info.nseq, static_cast<long long>(info.nres));
}

}  // namespace

void makedb(Params* p) {
  if (p->TIME == 1) UT_init_times();
  std::fputs("Getting matrix\n", std_err);  // deliberately whatever VERBOSE is
  const ScoreMatrix& matrix = *getmat(p);
  Intake intake;
  read_text(intake, matrix, p);
  require_whole(intake.text, p);
  show_build_time("Have read database\n", p);
  const bool volumes = intake.spool.pieces != nullptr;
  if (p->APPLY_INDEX == 1) {
    progress("Indexing sequence data\n", p);
    if (!volumes) {
      encode_sequences(intake.text.seqs.data(), static_cast<int32_t>(intake.text.seqs.size()), matrix);
    }
  }
  if (volumes) fill_spool(intake, matrix, p);
  show_build_time("Time to index sequences\n", p);
  if (volumes) {
    build_volumes(intake.spool, matrix, p);
  } else {
    write_database(intake, matrix, p);
  }
  tell_where(p);
  show_build_time("", p);
}

}  // namespace zelvan
