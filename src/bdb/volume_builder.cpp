#include "bdb/volume_builder.h"

#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "bdb/index_header.h"
#include "bdb/pending_files.h"
#include "bdb/volume_list.h"
#include "driver/progress.h"
#include "seq/size_limit.h"
#include "util/failure.h"
#include "util/file_identity.h"
#include "util/index_sort.h"
#include "util/mapped_file.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr std::size_t WRITE_BUFFER = std::size_t{1} << 20;

struct SeqLengths {
  int32_t ilen, tlen, len;
};

int64_t characters_of(const SeqLengths& s) {
  return int64_t{s.ilen} + 1 + s.tlen + 1 + s.len;
}

// The spool as it is read.
struct Spooled {
  MappedFile pieces;
  const SeqLengths* lengths = nullptr;
  int32_t n = 0;
};

// A volume: the places from first up to, but excluding, last in stored order.
struct VolumePlan {
  int32_t first = 0;
  int32_t last = 0;
  int64_t nres = 0;
  int64_t characters = 0;
};

[[noreturn]] void end_spool(const Spool& spool, const char* what) {
  UTerror("Error writing File");
  UTend_stream(
      std_err,
      "A temporary file beside %s %s: twice the size of the database is needed on that disk while it "
      "is built\n",
      spool.name.c_str(), what);
}

// A file that is gone when the run ends, however it ends.
FILE* open_unnamed(const UTstring& beside) {
  UTstring name = temporary_name(UTfollow(beside.c_str()));
  const int descriptor = create_unique(name);
  FILE* const stream = descriptor != -1 ? fdopen(descriptor, "w+b") : nullptr;
  if (stream == nullptr) {
    UTerror("Error opening File");
    UTend_input(std_err, "%s\n", name.c_str());
  }
  unlink(name.c_str());
  std::setvbuf(stream, nullptr, _IOFBF, WRITE_BUFFER);
  return stream;
}

// Where each sequence of the spool stands in stored order; empty for the order of the spool.
UTvector<int32_t> stored_places(const Spooled& spooled, const Params* p) {
  UTvector<int32_t> places;
  if (p->DO_SORT != 1) return places;
  const UTvector<int32_t> order =
      UTorder_of_keys(spooled.n, [&](int32_t k) { return spooled.lengths[k].len; });
  places.resize(order.size());
  for (std::size_t place = 0; place < order.size(); ++place) {
    places[static_cast<std::size_t>(order[place])] = static_cast<int32_t>(place);
  }
  return places;
}

int32_t place_of(const UTvector<int32_t>& places, int32_t k) {
  return places.empty() ? k : places[static_cast<std::size_t>(k)];
}

// Cuts the stored order so that each volume but the last holds an equal share and less than one sequence
// more, as far as the limit allows.
UTvector<VolumePlan> plan_volumes(const Spool& spool, const Spooled& spooled,
                                  const UTvector<int32_t>& places) {
  const int64_t limit = most_characters();
  const int64_t least = (spool.characters + limit - 1) / limit;
  const int64_t capacity = std::min(limit, spool.characters / least + spool.largest);
  UTvector<int32_t> order(places.empty() ? 0 : static_cast<std::size_t>(spooled.n));
  for (int32_t k = 0; k < static_cast<int32_t>(places.size()); ++k) {
    order[static_cast<std::size_t>(places[static_cast<std::size_t>(k)])] = k;
  }
  UTvector<VolumePlan> plans(1);
  for (int32_t place = 0; place < spooled.n; ++place) {
    const int32_t k = order.empty() ? place : order[static_cast<std::size_t>(place)];
    const int64_t characters = characters_of(spooled.lengths[k]);
    if (plans.back().characters + characters > capacity) plans.push_back({place, place, 0, 0});
    VolumePlan& plan = plans.back();
    plan.last = place + 1;
    plan.nres += spooled.lengths[k].len - 2;
    plan.characters += characters;
  }
  return plans;
}

// What is written of one volume; serves the next one as well.
struct Volume {
  UTvector<char> index;
  UTbuffer<IndexRecord> records;
  UTbuffer<char> sequences;
};

// Puts together the sequences of a plan, by two readings of the spool: of the lengths, which tell where each
// of them will lie, and of the sequences themselves.
void collect(Volume& volume, const VolumePlan& plan, const Spooled& spooled,
             const UTvector<int32_t>& places) {
  volume.records.resize(static_cast<std::size_t>(plan.last - plan.first));
  volume.sequences.resize(static_cast<std::size_t>(plan.characters));
  const auto record_of = [&](int32_t k) {
    const int32_t place = place_of(places, k);
    const bool inside = plan.first <= place && place < plan.last;
    return inside ? &volume.records[static_cast<std::size_t>(place - plan.first)] : nullptr;
  };
  for (int32_t k = 0; k < spooled.n; ++k) {
    const SeqLengths& s = spooled.lengths[k];
    if (IndexRecord* record = record_of(k); record != nullptr) *record = record_at(0, s.ilen, s.tlen, s.len);
  }
  int32_t at = 0;
  for (IndexRecord& record : volume.records) {
    record = record_at(at, record.ilen, record.tlen, record.len);
    at = record.seq_at + record.len;
  }
  constexpr int64_t STRETCH = int64_t{64} << 20;
  int64_t from = 0;
  int64_t forgotten = 0;
  for (int32_t k = 0; k < spooled.n; ++k) {
    const int64_t size = characters_of(spooled.lengths[k]);
    if (const IndexRecord* record = record_of(k); record != nullptr) {
      std::memcpy(&volume.sequences[static_cast<std::size_t>(record->id_at)], spooled.pieces.bytes + from,
                  static_cast<std::size_t>(size));
    }
    from += size;
    if (from - forgotten > STRETCH || k == spooled.n - 1) {
      UTforget_pages(spooled.pieces, forgotten, from);
      forgotten = from;
    }
  }
}

VolumeEntry write_volume(PendingVolumes& pending, std::size_t number, Volume& volume, const BdbInfo& info) {
  volume.index = header_bytes(info);
  const auto* const records = reinterpret_cast<const char*>(volume.records.data());
  volume.index.insert(volume.index.end(), records, records + volume.records.size() * sizeof(IndexRecord));
  write_pending(pending, pending.files[2 * number], volume.index.data(), volume.index.size());
  write_pending(pending, pending.files[2 * number + 1], volume.sequences.data(), volume.sequences.size());
  VolumeEntry entry;
  entry.nseq = info.nseq;
  entry.nres = static_cast<int32_t>(info.nres);
  entry.totchar = static_cast<int32_t>(info.totchar);
  entry.fingerprint = fingerprint(volume.index.data(), volume.index.size());
  return entry;
}

template <class T>
std::size_t most(const UTvector<VolumePlan>& plans, T size_of) {
  int64_t highest = 0;
  for (const VolumePlan& plan : plans) highest = std::max<int64_t>(highest, size_of(plan));
  return static_cast<std::size_t>(highest);
}

void write_set(const Spool& spool, const Spooled& spooled, const UTvector<int32_t>& places,
               const UTvector<VolumePlan>& plans, const ScoreMatrix& matrix, const Params* p) {
  VolumeList list;
  list.nseq = spool.nseq;
  list.nres = spool.nres;
  list.totchar = spool.characters;
  list.counts = spool.counts;
  // All memory first: where there is none, the run ends before any file exists.
  Volume volume;
  volume.records.reserve(most(plans, [](const VolumePlan& plan) { return plan.last - plan.first; }));
  volume.sequences.reserve(most(plans, [](const VolumePlan& plan) { return plan.characters; }));
  UTlarge_pages(volume.sequences.data(), volume.sequences.capacity());
  BdbInfo info = describe_database(0, 0, 0, matrix, p);
  volume.index.reserve(header_bytes(info).size() + volume.records.capacity() * sizeof(IndexRecord));
  PendingVolumes pending =
      prepare_volumes(p->BDB_INDEX_FILE.name, p->BDB_SEQ_FILE.name, static_cast<int32_t>(plans.size()));
  for (std::size_t number = 0; number < plans.size(); ++number) {
    const VolumePlan& plan = plans[number];
    collect(volume, plan, spooled, places);
    info.nseq = plan.last - plan.first;
    info.nres = plan.nres;
    info.totchar = plan.characters;
    list.volumes.push_back(write_volume(pending, number, volume, info));
  }
  const UTstring text = list_text(list);
  write_pending(pending, pending.list, text.data(), text.size());
  publish(pending);
  std::fprintf(std_err, "Wrote %zu volumes, %s, .bsq to %s, .bsq, and %s: %d sequences, %lld residues\n",
               plans.size(), pending.files.front().name.c_str(),
               pending.files[pending.files.size() - 2].name.c_str(), pending.list.name.c_str(),
               static_cast<int32_t>(spool.nseq), static_cast<long long>(spool.nres));
}

MappedFile map_spool(const Spool& spool, FILE* stream, int64_t size) {
  if (std::fflush(stream) != 0) end_spool(spool, "could not be written");
  const MappedFile file = UTmap_file(fileno(stream), size);
  if (size > 0 && file.bytes == nullptr) end_spool(spool, "could not be mapped");
  return file;
}

}  // namespace

Spool open_spool(const Params* p) {
  Spool spool;
  spool.name = p->BDB_SEQ_FILE.name;
  spool.pieces = open_unnamed(p->BDB_SEQ_FILE.name);
  spool.lengths = open_unnamed(p->BDB_INDEX_FILE.name);
  return spool;
}

void add_to_spool(Spool& spool, const SeqRec* seqs, int32_t n) {
  for (const SeqRec* s = seqs; s < seqs + n; ++s) {
    const SeqLengths lengths = {s->ilen, s->tlen, s->len};
    const int64_t characters = characters_of(lengths);
    if (characters > most_characters()) {
      UTend_input(std_err,
                  "Sequence %.200s is too large for a binary database: %lld characters of identifier, title "
                  "and residues (> %lld)\n",
                  s->id, static_cast<long long>(characters), static_cast<long long>(most_characters()));
    }
    // The three lie behind one another, as in a sequence file.
    const auto size = static_cast<std::size_t>(characters);
    if (std::fwrite(s->id, 1, size, spool.pieces) != size ||
        std::fwrite(&lengths, sizeof lengths, 1, spool.lengths) != 1) {
      end_spool(spool, "could not be written");
    }
    ++spool.nseq;
    spool.nres += residues(*s);
    spool.characters += characters;
    spool.largest = std::max(spool.largest, characters);
  }
  count_residues(seqs, n, spool.counts);
}

void build_volumes(Spool& spool, const ScoreMatrix& matrix, const Params* p) {
  UTexpect_lost_files(
      UTcat({"A temporary file beside ", spool.name, " cannot be read any more: check its disk\n"}));
  MappedFile pieces = map_spool(spool, spool.pieces, spool.characters);
  MappedFile lengths = map_spool(spool, spool.lengths, spool.nseq * static_cast<int64_t>(sizeof(SeqLengths)));
  Spooled spooled;
  spooled.pieces = pieces;
  spooled.lengths = reinterpret_cast<const SeqLengths*>(lengths.bytes);
  spooled.n = static_cast<int32_t>(spool.nseq);
  progress("Sorting sequences\n", p);
  const UTvector<int32_t> places = stored_places(spooled, p);
  const UTvector<VolumePlan> plans = plan_volumes(spool, spooled, places);
  progress("Writing volumes\n", p);
  write_set(spool, spooled, places, plans, matrix, p);
  UTunmap_file(pieces);
  UTunmap_file(lengths);
  std::fclose(spool.pieces);
  std::fclose(spool.lengths);
}

}  // namespace zelvan
