#include <cstring>

#include "harness.h"
#include "seq/alphabet.h"
#include "seq/codon.h"
#include "seq/matrix.h"
#include "seq/sequence_file.h"
#include "targets.h"
#include "util/streams.h"

namespace {

std::string_view text_of(FuzzInput input) {
  return {reinterpret_cast<const char*>(input.data()), input.size()};
}

void read_matrix(FuzzInput input, int32_t format) {
  Params p = default_params();
  scratch_file("matrix", text_of(input));
  p.MATRIX_DIR = scratch_directory().c_str();
  p.MATRIX_FILE.name = "matrix";
  ScoreMatrix matrix;
  const bool read = came_back([&] {
    (format == 0 ? getmat_pir : getmat_ncbi)(matrix, &p);
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

void check_record(const SeqRec& s) {
  require(s.ilen >= 0 && s.tlen >= 0 && s.len >= 2, "lengths");
  require(std::strlen(s.id) == static_cast<std::size_t>(s.ilen), "the identifier");
  require(std::strlen(s.title) == static_cast<std::size_t>(s.tlen), "the title");
  require(s.seq[0] == ' ' && s.seq[s.len - 1] == 0, "the pads");
  for (int32_t i = 1; i <= s.len - 2; ++i)
    require(s.seq[i] >= 'A' && s.seq[i] <= 'Z', "residues are letters");
}

// The records of a database, and the first of them as a query.
void read_sequences(FuzzInput input, int32_t format) {
  Params p = default_params();
  p.DB_FORMAT = p.QSEQ_FORMAT = format;
  p.DB_FILE.name = p.QSEQ_FILE.name = scratch_file("sequences", text_of(input)).c_str();
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
  const ScoreMatrix& matrix = shipped_matrix(p);
  seqtoi(query.seq, query.len, matrix);
  for (int32_t i = 0; i < query.len; ++i) require(query.seq[i] >= 0 && query.seq[i] < matrix.inlen, "codes");
  itoseq(query.seq, query.len, matrix);
  require(query.seq[0] == ' ' && query.seq[query.len - 1] == 0, "the pads of a decoded sequence");
}

}  // namespace

void fuzz_matrix_pir(FuzzInput input) {
  read_matrix(input, 0);
}

void fuzz_matrix_ncbi(FuzzInput input) {
  read_matrix(input, 1);
}

void fuzz_fasta(FuzzInput input) {
  read_sequences(input, 1);
}

void fuzz_pir(FuzzInput input) {
  read_sequences(input, 0);
}

// The text before a zero byte is the codon table, the rest the DNA to translate by it.
void fuzz_codon(FuzzInput input) {
  Params p = default_params();
  const std::string_view text = text_of(input);
  const std::size_t cut = std::min(text.find('\0'), text.size());
  scratch_file("codons", text.substr(0, cut));
  p.GENERAL_DIR = scratch_directory().c_str();
  p.CODON_FILE.name = "codons";
  CodonTable codons;
  if (!came_back([&] { codons = getcodon(&p); })) return;
  for (const Codon& entry : codons) {
    require(std::memchr(entry.codon, 0, sizeof entry.codon) != nullptr, "codons are terminated");
    findcodon(codons.data(), NCODONS, entry.codon);
  }
  std::string letters = "ACGTNRYACG";
  for (const char c : text.substr(cut)) letters += static_cast<char>('A' + (c & 0x1F) % 26);
  for (const int32_t complement : {0, 1}) {
    SeqStore store;
    SeqRec record =
        store_sequence(store, "q", 1, "t", 1, letters.data(), static_cast<int32_t>(letters.size()));
    UTvector<int8_t> dna;
    if (!came_back([&] { setup_dnaseq(dna, record, codons, complement); })) continue;
    require(dna.size() == letters.size() + 2 && record.seq[0] == ' ' && dna.back() == 0, "the DNA is kept");
    seqtoi(record.seq, record.len, shipped_matrix(p));
  }
}
