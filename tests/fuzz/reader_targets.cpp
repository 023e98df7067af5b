// The readers of every kind of file.
#include <algorithm>
#include <cstring>
#include <sstream>
#include <vector>

#include "bdb/identifiers.h"
#include "bdb/loader.h"
#include "bdb/sequence_writer.h"
#include "bdb/volume_list.h"
#include "driver/alias.h"
#include "driver/command_line.h"
#include "driver/gap_defaults.h"
#include "harness.h"
#include "seq/alphabet.h"
#include "seq/codon.h"
#include "seq/composition.h"
#include "seq/matrix_file.h"
#include "seq/sequence_file.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

// ---- Configuration.

// A key of every type; a table of all keys would only take longer.
constexpr char ALIASES[] =
    "MODE mode # \nMIN_SCORE # \nLD_PEN ld # \nCUT_CONSTANT # \nPROBCUT probcut # \nPROBCUT2 probcut2 # \n"
    "PIDTHRESH # \nGAP_CHARACTER gap # \nPRECISION prec # \nMATRIX_FILE m # \nMATRIX_DIR # \n"
    "BDB_ROOT bdb # \nDB_DIR # \nSTDIN stdin # \nSTDOUT stdout # \nSTDERR # \n";

// The defaults file, and its words as the arguments of a command.
void defaults(FuzzInput input) {
  const std::string path = scratch_file("zelvan_defaults.dat", input);
  const std::string aliases = scratch_file("zelvan_alias.dat", ALIASES);
  Params record;
  Params* const p = &record;
  if (!came_back([&] { record = GetPars(path.c_str(), aliases.c_str()); })) return;
  require(p->SUCCESS == 1 || p->SUCCESS == -1, "SUCCESS is 1 or -1");
  require(p->PRECISION == 1 || p->PRECISION % 10 == 0, "PRECISION is 1 or a multiple of 10");
  require(p->STDIN != nullptr && p->STDOUT != nullptr && p->STDERR != nullptr, "three streams");

  std::istringstream text{std::string(input)};
  std::vector<std::string> words = {"zelvan"};
  for (std::string word; text >> word;) words.push_back(word);
  std::vector<const char*> arguments;
  for (const std::string& word : words) arguments.push_back(word.c_str());
  p->VERSION = "version\n";
  came_back([&] { GetCmd(p, static_cast<int>(arguments.size()), arguments.data()); });
}

void aliases(FuzzInput input) {
  Params p = default_params();
  AliasTable table;
  bool read = false;
  const std::string path = scratch_file("zelvan_alias.dat", input);
  require(came_back([&] { read = read_aliases(path.c_str(), table, &p); }),
          "an alias file never ends the run");
  require(read == (p.SUCCESS != -1), "SUCCESS tells whether the file was read");
  require(read || table.empty(), "a refused file leaves no entry");
  for (const AliasEntry& entry : table) {
    require(!entry.words.empty() && entry.words[0] == entry.name, "the key is its own first word");
    for (const UTstring& word : entry.words) {
      require(alias(UTcat({"-", word}).c_str(), entry.name.c_str(), table) == 0, "every word names its key");
    }
  }
}

void gap_defaults(FuzzInput input) {
  Params p = default_params();
  bool read = false;
  const std::string path = scratch_file("zelvan_gapdefs.dat", input);
  require(came_back([&] { read = GetGaps(path.c_str(), &p); }), "a gap-defaults file never ends the run");
  require(read == (p.SUCCESS == 1), "SUCCESS tells whether the file was read");
  require(p.NGAPDEFS == static_cast<int32_t>(p.GAPDEFS.size()) && p.NGAPDEFS <= p.GAPDEFS_CAPACITY,
          "entries");
  require(read || p.NGAPDEFS == 0, "a refused file leaves no entry");
  if (p.NGAPDEFS == 0) return;
  const GapDefault& entry = p.GAPDEFS[0];
  p.MODE = entry.mode == 0 ? 210 : entry.mode == 2 ? 212 : entry.mode;
  p.MATRIX_FILE.name = entry.matrix;
  setgapdefs(&p);
}

// ---- Matrices, in both layouts.

template <void (*READ)(ScoreMatrix&, Params*)>
void read_matrix(FuzzInput input) {
  Params p = default_params();
  scratch_file("matrix", input);
  p.MATRIX_DIR = scratch().path.c_str();
  p.MATRIX_FILE.name = "matrix";
  ScoreMatrix matrix;
  const bool read = came_back([&] {
    READ(matrix, &p);
    PrintPairscoreMatrix(std_err, matrix, &p);
    SetStopCodonWeight(matrix, &p);
  });
  if (!read) return;
  SetMinMaxMatrixValues(matrix);
  PrintMatrix(matrix, std_err);
  require(matrix.inlen == static_cast<int32_t>(matrix.indx.size()) && matrix.inlen <= 128, "the alphabet");
  for (int32_t character = -128; character < 256; ++character) {
    const int8_t code = residue_code(matrix, character);
    require(code >= 0 && code < matrix.inlen, "a code for every character");
  }
  for (int32_t a = 0; a < matrix.inlen; ++a) {
    const int8_t code = residue_code(matrix, residue_letter(matrix, a));
    require(residue_letter(matrix, code) == residue_letter(matrix, a), "letter and code go together");
    for (int32_t b = 0; b < matrix.inlen; ++b) {
      const int32_t score = matrix.pairscore[a][b];
      require(score % p.PRECISION == 0, "scores are multiples of PRECISION");
      require(matrix.minval <= score && score <= matrix.maxval, "the extremes");
    }
  }
}

// ---- Sequence files, in both layouts: the records of a database, and the first of them as a query.

void check_record(const SeqRec& s) {
  require(s.ilen >= 0 && s.tlen >= 0 && s.len >= 2, "lengths");
  require(std::strlen(s.id) == static_cast<std::size_t>(s.ilen), "the identifier");
  require(std::strlen(s.title) == static_cast<std::size_t>(s.tlen), "the title");
  require(s.seq[0] == ' ' && s.seq[s.len - 1] == 0, "the pads");
  for (int32_t i = 1; i <= s.len - 2; ++i)
    require(s.seq[i] >= 'A' && s.seq[i] <= 'Z', "residues are letters");
}

template <int32_t FORMAT>
void sequences(FuzzInput input) {
  Params p = default_params();
  p.DB_FORMAT = p.QSEQ_FORMAT = FORMAT;
  p.DB_FILE.name = p.QSEQ_FILE.name = scratch_file("sequences", input).c_str();
  TextDatabase database;
  const bool read = came_back([&] { read_text_database(database, true, &p); });
  SeqStore store;
  SeqRec query;
  const bool query_read = came_back([&] { query = get_query_seq(store, &p); });
  require(!read || query_read == !database.seqs.empty(), "the query is the first record");
  int64_t residues = 0;
  for (const SeqRec& s : database.seqs) {
    check_record(s);
    residues += s.len - 2;
  }
  require(residues == database.nres, "the residues of a database");
  if (!query_read || database.seqs.empty()) return;
  const SeqRec& first = database.seqs[0];
  require(std::strcmp(query.id, first.id) == 0 && query.len == first.len &&
              std::memcmp(query.seq, first.seq, static_cast<std::size_t>(query.len)) == 0,
          "a query is read like a record");
  const ScoreMatrix& matrix = shipped_matrix();
  seqtoi(query.seq, query.len, matrix);
  for (int32_t i = 0; i < query.len; ++i) require(query.seq[i] >= 0 && query.seq[i] < matrix.inlen, "codes");
  itoseq(query.seq, query.len, matrix);
  require(query.seq[0] == ' ' && query.seq[query.len - 1] == 0, "the pads of a decoded sequence");
}

// ---- The text before a zero byte is the codon table, the rest the DNA to translate by it.

void codon(FuzzInput input) {
  Params p = default_params();
  const std::size_t cut = std::min(input.find('\0'), input.size());
  scratch_file("codons", input.substr(0, cut));
  p.GENERAL_DIR = scratch().path.c_str();
  p.CODON_FILE.name = "codons";
  CodonTable codons;
  if (!came_back([&] { codons = getcodon(&p); })) return;
  for (const Codon& entry : codons) {
    require(std::memchr(entry.codon, 0, sizeof entry.codon) != nullptr, "codons are terminated");
    findcodon(codons.data(), NCODONS, entry.codon);
  }
  std::string letters = "ACGTNRYACG";
  for (const char c : input.substr(cut)) letters += static_cast<char>('A' + (c & 0x1F) % 26);
  for (const int32_t complement : {0, 1}) {
    SeqStore store;
    SeqRec record =
        store_sequence(store, "q", 1, "t", 1, letters.data(), static_cast<int32_t>(letters.size()));
    UTvector<int8_t> dna;
    if (!came_back([&] { setup_dnaseq(dna, record, codons, complement); })) continue;
    require(dna.size() == letters.size() + 2 && record.seq[0] == ' ' && dna.back() == 0, "the DNA is kept");
    seqtoi(record.seq, record.len, shipped_matrix());
  }
}

// ---- A binary database: two bytes tell the length of its index file, which is followed by the sequence file.

void binary_database(FuzzInput input) {
  Choices choices{input};
  const auto index_size = static_cast<std::size_t>(choices.number(0, UINT16_MAX));
  const std::string_view bytes = choices.left;
  Params p = default_params();
  p.VERBOSE = 1;
  p.TIME = 6;
  p.BDB_INDEX_FILE.name = scratch_file("db.bix", bytes.substr(0, index_size)).c_str();
  p.BDB_SEQ_FILE.name = scratch_file("db.bsq", bytes.substr(std::min(index_size, bytes.size()))).c_str();
  p.matrix = std::make_shared<ScoreMatrix>(shipped_matrix());
  const ScoreMatrix& matrix = *p.matrix;
  BinaryDatabase database;
  if (!came_back([&] { loadbdb(database, matrix, &p); })) return;

  const auto n = static_cast<int32_t>(database.seqs.size());
  require(p.binfo == &database.info && n == database.info.nseq, "the header");
  if (database.info.index_flag != 1) encode_sequences(database.seqs.data(), n, matrix);
  GetDBFreqs(database.seqs.data(), n, &p);
  int64_t residues = 0;
  for (const int64_t count : matrix.dbcount) residues += count;
  for (const SeqRec& s : database.seqs) residues -= s.len - 2;
  require(residues == 0, "every residue has a code");
  shsort(n, database.seqs.data());
  for (const SeqRec& s : database.seqs) {
    const SeqRec* found = findid(database.seqs.data(), n, s.id);
    require(found != nullptr && std::strcmp(found->id, s.id) == 0,
            "every sequence is found by its identifier");
    SaveFastaSeq(std_err, s, matrix);
  }
}

// ---- The score list of a report. The first byte is EXTRACT_SEQ.

void score_list(FuzzInput input) {
  if (input.size() < 2) return;
  Params p = default_params();
  p.EXTRACT_SEQ = static_cast<uint8_t>(input[0]);
  std::string report(input.substr(1));
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

// ---- The list of a set of volumes.

void volume_list(FuzzInput input) {
  VolumeList list;
  if (read_list(std::string(input).c_str(), list) != nullptr) {
    require(list.volumes.empty(), "a refused list is not used");
    return;
  }
  VolumeList again;
  require(read_list(list_text(list).c_str(), again) == nullptr && list_text(again) == list_text(list),
          "a list is read as it is written");
}

}  // namespace

const FuzzTargets& reader_targets() {
  static const FuzzTargets targets = {
      {"defaults", defaults},
      {"alias", aliases},
      {"gap_defaults", gap_defaults},
      {"matrix_pir", read_matrix<getmat_pir>},
      {"matrix_ncbi", read_matrix<getmat_ncbi>},
      {"fasta", sequences<1>},
      {"pir", sequences<0>},
      {"codon", codon},
      {"binary_database", binary_database},
      {"score_list", score_list},
      {"volume_list", volume_list},
  };
  return targets;
}

}  // namespace zelvan
