#include <algorithm>
#include <cstring>

#include "bdb/identifiers.h"
#include "bdb/loader.h"
#include "bdb/sequence_writer.h"
#include "harness.h"
#include "seq/alphabet.h"
#include "targets.h"
#include "util/streams.h"

void fuzz_binary_database(FuzzInput input) {
  if (input.size() < 2) return;
  const std::string_view bytes(reinterpret_cast<const char*>(input.data()) + 2, input.size() - 2);
  const std::size_t announced = input[0] + 256U * input[1];
  const std::size_t index_size = std::min(announced, bytes.size());
  Params p = default_params();
  p.VERBOSE = 1;
  p.TIME = 6;
  p.BDB_INDEX_FILE.name = scratch_file("db.bix", bytes.substr(0, index_size)).c_str();
  p.BDB_SEQ_FILE.name = scratch_file("db.bsq", bytes.substr(index_size)).c_str();
  ScoreMatrix matrix = shipped_matrix(p);
  BinaryDatabase database;
  if (!came_back([&] { loadbdb(database, matrix, &p); })) return;

  const auto n = static_cast<int32_t>(database.seqs.size());
  require(p.binfo == &database.info && n == database.info.nseq, "the header");
  if (database.info.index_flag != 1) encode_sequences(database.seqs.data(), n, matrix);
  p.matrix = &matrix;
  GetDBFreqs(database.seqs.data(), n, &p);
  int64_t residues = 0;
  for (const int32_t count : matrix.dbcount) residues += count;
  require(residues == database.info.nres, "every residue has a code");
  shsort(n, database.seqs.data());
  for (const SeqRec& s : database.seqs) {
    const SeqRec* found = findid(database.seqs.data(), n, s.id);
    require(found != nullptr && std::strcmp(found->id, s.id) == 0,
            "every sequence is found by its identifier");
    SaveFastaSeq(std_err, s, matrix);
  }
}

// The first byte is EXTRACT_SEQ.
void fuzz_score_list(FuzzInput input) {
  if (input.size() < 2) return;
  Params p = default_params();
  p.EXTRACT_SEQ = input[0];
  std::string report(input.begin() + 1, input.end());
  FILE* const stream = fmemopen(report.data(), report.size(), "r");
  require(stream != nullptr, "a stream");
  came_back([&] {
    const UTvector<UTstring> ids = ReadIdListFromScanFile(stream, &p);
    require(static_cast<int32_t>(ids.size()) < std::max(p.EXTRACT_SEQ + 1, 1),
            "fewer identifiers than lines");
    for (const UTstring& id : ids) require(!id.empty() && id.find_first_of(" \n") == id.npos, "words");
  });
  std::fclose(stream);
}
