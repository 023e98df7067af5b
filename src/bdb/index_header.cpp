#include "bdb/index_header.h"

#include <cstring>

#include "util/file_record.h"

namespace zelvan {
namespace {

void add_int(UTvector<char>& bytes, int64_t value) {
  const auto number = static_cast<int32_t>(value);
  const std::size_t at = bytes.size();
  bytes.resize(at + sizeof number);
  std::memcpy(&bytes[at], &number, sizeof number);
}

// A length and that many bytes of a text; with its terminator when the length counts it.
void add_text(UTvector<char>& bytes, int32_t length, const UTstring& text) {
  add_int(bytes, length);
  bytes.insert(bytes.end(), text.c_str(), text.c_str() + length);
}

}  // namespace

BdbInfo describe_database(int64_t nseq, int64_t nres, int64_t totchar, const ScoreMatrix& matrix,
                          const Params* p) {
  BdbInfo info;
  info.index_flag = p->APPLY_INDEX;
  info.index_length = matrix.inlen - 3;
  info.index = matrix.indx.substr(0, static_cast<std::size_t>(info.index_length));
  info.nseq = static_cast<int32_t>(nseq);
  info.nres = nres;
  info.totchar = totchar;
  info.date = UTlocaltime();
  info.date_length = static_cast<int32_t>(info.date.size()) + 1;
  info.name = p->DB_FILE.name;
  info.name_length = static_cast<int32_t>(info.name.size()) + 1;
  return info;
}

UTvector<char> header_bytes(const BdbInfo& info) {
  UTvector<char> bytes;
  add_int(bytes, info.index_flag);
  add_text(bytes, info.index_length, info.index);
  add_int(bytes, info.nseq);
  add_int(bytes, info.nres);
  add_int(bytes, info.totchar);
  add_text(bytes, info.date_length, info.date);
  add_text(bytes, info.name_length, info.name);
  return bytes;
}

IndexRecord record_at(int32_t at, int32_t ilen, int32_t tlen, int32_t len) {
  IndexRecord record;
  record.id_at = at;
  record.ilen = ilen;
  record.title_at = record.id_at + ilen + 1;
  record.tlen = tlen;
  record.seq_at = record.title_at + tlen + 1;
  record.len = len;
  return record;
}

}  // namespace zelvan
