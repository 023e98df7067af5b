#include "bdb/volumes.h"

#include <sys/stat.h>

#include <algorithm>
#include <memory>

#include "bdb/index_reader.h"
#include "driver/progress.h"
#include "util/failure.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr const char* AGAIN = "Copy all files of the database again, or build it again with MODE 99\n";

VolumeList open_list(FileRec& file) {
  file.stream = UTfopen(file.name.c_str(), "rb", 0);
  if (file.stream == nullptr) {
    UTerror("Error opening File");
    UTend_input(
        std_err,
        "%s\nThe database has volumes, but not this list of them: a build did not come to its end, or "
        "not all files were copied\n%s",
        file.name.c_str(), AGAIN);
  }
  UTbuffer<char> text = read_bulk(file.stream, INT64_MAX);
  text.push_back('\0');
  VolumeList list;
  if (const char* fault = read_list(text.data(), list); fault != nullptr) end_damaged(file, "%s", fault);
  return list;
}

// The list goes before other volumes are stored: one that has kept its name until all of them were open is of
// the same build.
void check_still_listed(const FileRec& list) {
  struct stat opened;
  struct stat named;
  if (fstat(fileno(list.stream), &opened) == 0 && stat(list.name.c_str(), &named) == 0 &&
      opened.st_dev == named.st_dev && opened.st_ino == named.st_ino) {
    return;
  }
  UTend_input(std_err, "Database file %s was replaced while it was being opened: start the run again\n",
              list.name.c_str());
}

[[noreturn]] void end_of_two_builds(const FileRec& file, const FileRec& list) {
  check_still_listed(list);
  UTend_input(std_err, "Database file %s is of another build than the list of volumes %s\n%s",
              file.name.c_str(), list.name.c_str(), AGAIN);
}

void map_sequences(Volume& volume, int64_t totchar) {
  UTfileopen(volume.file, "rb", 1);
  struct stat status;
  if (fstat(fileno(volume.file.stream), &status) != 0 || status.st_size != totchar) {
    end_damaged(volume.file, "it has %lld bytes, but its index file counts %lld",
                static_cast<long long>(bytes_of(volume.file.stream)), static_cast<long long>(totchar));
  }
  volume.device = static_cast<int64_t>(status.st_dev);
  volume.number = static_cast<int64_t>(status.st_ino);
  volume.changed = status.st_mtim;
  volume.text = UTmap_file(fileno(volume.file.stream), totchar);
  if (totchar > 0 && volume.text.bytes == nullptr) {
    UTerror("Error mapping File");
    UTend_input(std_err, "%s\n", volume.file.name.c_str());
  }
  UTfileclose(volume.file, 1);
}

// The records of one volume behind those of the volumes before it.
void add_sequences(VolumeSet& set, const Volume& volume, IndexBytes& index, int32_t nseq) {
  const char* const text = volume.text.bytes;
  int64_t end = 0;
  for (int32_t number = 1; number <= nseq; ++number) {
    IndexRecord record;
    take(index, &record, sizeof record, "the records");
    const char* fault = fault_of_record(record, static_cast<std::size_t>(volume.text.size));
    if (fault != nullptr) end_damaged(index.file, "sequence %d: %s", number, fault);
    if (record.id_at != end || record.title_at != record.id_at + record.ilen + 1 ||
        record.seq_at != record.title_at + record.tlen + 1) {
      end_damaged(index.file, "sequence %d: it does not follow on the one before", number);
    }
    end = int64_t{record.seq_at} + record.len;
    SeqRec s;
    s.id = text + record.id_at;
    s.title = text + record.title_at;
    s.seq = reinterpret_cast<int8_t*>(const_cast<char*>(text + record.seq_at));  // nobody writes there
    s.ilen = record.ilen;
    s.tlen = record.tlen;
    s.len = record.len;
    set.seqs.push_back(s);
  }
}

void open_volume(VolumeSet& set, int32_t number, const FileRec& list, const Params* p) {
  const VolumeEntry& entry = set.list.volumes[static_cast<std::size_t>(number)];
  FileRec index_file = UTfilemake(volume_name(p->BDB_INDEX_FILE.name, number).c_str(), "rb", 0);
  UTfileopen(index_file, "rb", 1);
  const UTbuffer<char> bytes = read_bulk(index_file.stream, INT64_MAX);
  UTfileclose(index_file, 1);
  if (fingerprint(bytes.data(), bytes.size()) != entry.fingerprint) {
    end_of_two_builds(index_file, list);
  }
  IndexBytes index{index_file, bytes.data(), bytes.size()};
  const BdbInfo info = take_header(index);
  if (info.nseq != entry.nseq || info.nres != entry.nres || info.totchar != entry.totchar) {
    end_of_two_builds(index_file, list);
  }
  if (number == 0) set.info = info;
  Volume volume;
  volume.file = UTfilemake(volume_name(p->BDB_SEQ_FILE.name, number).c_str(), "rb", 0);
  volume.first = static_cast<int32_t>(set.seqs.size());
  map_sequences(volume, info.totchar);
  add_sequences(set, volume, index, info.nseq);
  set.volumes.push_back(volume);
}

bool holds(const Volume& volume, const char* at) {
  return volume.text.bytes <= at && at < volume.text.bytes + volume.text.size;
}

[[noreturn]] void end_at_sequence(const VolumeSet& set, const SeqRec& record, const char* fault) {
  const auto volume = std::find_if(set.volumes.begin(), set.volumes.end(),
                                   [&](const Volume& one) { return holds(one, record.id); });
  const auto first = set.seqs.begin() + volume->first;
  const auto place = std::find_if(first, set.seqs.end(), [&](const SeqRec& s) { return s.id == record.id; });
  end_damaged(volume->file, "sequence %d: %s", static_cast<int32_t>(place - first) + 1, fault);
}

}  // namespace

void open_volumes(VolumeSet& out_set, const ScoreMatrix& matrix, Params* p) {
  progress("Opening list of volumes\n", p);
  FileRec list = UTfilemake(volumes_name(p->BDB_INDEX_FILE.name).c_str(), "rb", 0);
  VolumeSet& set = out_set;
  set.list = open_list(list);
  set.seqs.reserve(static_cast<std::size_t>(set.list.nseq));
  progress("Opening volumes\n", p);
  const auto count = static_cast<int32_t>(set.list.volumes.size());
  for (int32_t number = 0; number < count; ++number) open_volume(set, number, list, p);
  check_still_listed(list);
  UTfileclose(list, 1);
  if (set.info.index_flag == 1) check_alphabet(set.info, matrix);
  set.info.nseq = static_cast<int32_t>(set.list.nseq);
  set.info.nres = set.list.nres;
  set.info.totchar = set.list.totchar;
  if (p->VERBOSE != 0) show_info(set.info);
  p->binfo = &set.info;
  p->APPLY_INDEX = set.info.index_flag;
  UTexpect_lost_files(UTcat({"A sequence file of the database ", p->BDB_ROOT,
                             " cannot be read any more: it was cut short, or its disk failed\n", AGAIN}));
  show_time("open_volumes: have read indexes: ", p);
}

void check_volume_sequence(const VolumeSet& set, const SeqRec& record, const ScoreMatrix& matrix) {
  const SeqRec& first = set.seqs.front();
  const auto pad = static_cast<int8_t>(first.title[first.tlen + 1]);
  const char* const fault = fault_of_sequence(record, pad, set.info, matrix);
  if (fault != nullptr) end_at_sequence(set, record, fault);
}

ReadCodes volume_reader(const VolumeSet& set, const ScoreMatrix& matrix,
                        const std::function<void(SeqRec&)>& translate) {
  if (set.info.index_flag == 1) {
    return [&set, &matrix](const SeqRec& record, UTvector<int8_t>&) -> const int8_t* {
      check_volume_sequence(set, record, matrix);
      return record.seq;
    };
  }
  const auto codes = std::make_shared<const PairCodes>(make_pair_codes(matrix));
  return [&set, &matrix, translate, codes](const SeqRec& record, UTvector<int8_t>& room) -> const int8_t* {
    check_volume_sequence(set, record, matrix);
    const auto len = static_cast<std::size_t>(record.len);
    if (room.size() < len) room.resize(len);
    if (!translate) {
      encode_pairs(record.seq, record.len, *codes, room.data());
      return room.data();
    }
    SeqRec copy = record;
    copy.seq = room.data();
    std::copy_n(record.seq, len, copy.seq);
    translate(copy);
    encode_pairs(copy.seq, copy.len, *codes, copy.seq);
    return copy.seq;
  };
}

void check_unchanged(const VolumeSet& set) {
  for (const Volume& volume : set.volumes) {
    struct stat status;
    if (stat(volume.file.name.c_str(), &status) != 0) continue;
    if (static_cast<int64_t>(status.st_dev) != volume.device ||
        static_cast<int64_t>(status.st_ino) != volume.number) {
      continue;
    }
    if (status.st_size == volume.text.size && status.st_mtim.tv_sec == volume.changed.tv_sec &&
        status.st_mtim.tv_nsec == volume.changed.tv_nsec) {
      continue;
    }
    UTend_input(std_err, "Database file %s was changed while it was being searched: start the run again\n",
                volume.file.name.c_str());
  }
}

}  // namespace zelvan
