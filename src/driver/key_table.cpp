#include "driver/key_table.h"

#include <cerrno>
#include <cstdlib>

#include "driver/alias.h"
#include "util/failure.h"
#include "util/numbers.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

const KeyEntry KEYS[] = {
    {"MAX_NSEQ", KeyType::INT, &Params::MAX_NSEQ, "500"},
    {"GAP_CHARACTER", KeyType::CHAR, &Params::GAP_CHARACTER, " "},
    {"FGAP_CHARACTER", KeyType::CHAR, &Params::FGAP_CHARACTER, "^"},
    {"IGAP_CHARACTER", KeyType::CHAR, &Params::IGAP_CHARACTER, ":"},
    {"STOP_CHARACTER", KeyType::CHAR, &Params::STOP_CHARACTER, "!"},
    {"OUTLEN_INCREASE_FACTOR", KeyType::FLOAT, &Params::OUTLEN_INCREASE_FACTOR, "2.0"},
    {"TIME", KeyType::INT, &Params::TIME, "1"},
    {"MODE", KeyType::INT, &Params::MODE, "0"},
    {"MIXED_MODE", KeyType::INT, &Params::MIXED_MODE, "0"},
    {"QSEQ_FORMAT", KeyType::INT, &Params::QSEQ_FORMAT, "0"},
    {"QBLC_FORMAT", KeyType::INT, &Params::QBLC_FORMAT, "2"},
    {"DB_FORMAT", KeyType::INT, &Params::DB_FORMAT, "1"},
    {"FRAG_FILE_FORMAT", KeyType::INT, &Params::FRAG_FILE_FORMAT, "1"},
    {"MAX_SEQ_LEN", KeyType::INT, &Params::MAX_SEQ_LEN, "5000"},
    {"VERBOSE", KeyType::INT, &Params::VERBOSE, "0"},
    {"MAX_ID_LEN", KeyType::INT, &Params::MAX_ID_LEN, "100"},
    {"MAX_TITLE_LEN", KeyType::INT, &Params::MAX_TITLE_LEN, "1000"},
    {"MAX_BLOC_SEQ", KeyType::INT, &Params::MAX_BLOC_SEQ, "500"},
    {"DUMP_STATS", KeyType::INT, &Params::DUMP_STATS, "0"},
    {"DO_STATS", KeyType::INT, &Params::DO_STATS, "1"},
    {"PROB_TYPE", KeyType::INT, &Params::PROB_TYPE, "2"},
    {"MIN_NSTATS", KeyType::INT, &Params::MIN_NSTATS, "500"},
    {"LD_PEN", KeyType::REAL_SCALED, &Params::LD_PEN, "8"},
    {"LI_PEN", KeyType::REAL_SCALED, &Params::LI_PEN, "8"},
    {"FS_PEN", KeyType::REAL_SCALED, &Params::FS_PEN, "8"},
    {"FSE_PEN", KeyType::REAL_SCALED, &Params::FSE_PEN, "8"},
    {"EPL_PEN", KeyType::INT, &Params::EPL_PEN, "100"},
    {"EPR_PEN", KeyType::INT, &Params::EPR_PEN, "100"},
    {"EPT_PEN", KeyType::INT, &Params::EPT_PEN, "200"},
    {"EPB_PEN", KeyType::INT, &Params::EPB_PEN, "200"},
    {"MM_LD_PEN", KeyType::REAL_SCALED, &Params::MM_LD_PEN, "6"},
    {"STOP_WEIGHT", KeyType::INT_SCALED, &Params::STOP_WEIGHT, "-30"},
    {"MIN_SCORE", KeyType::INT_SCALED, &Params::MIN_SCORE, "0"},
    {"MIN_LEN", KeyType::INT, &Params::MIN_LEN, "1"},
    {"MIN_ASCORE", KeyType::INT_SCALED, &Params::MIN_ASCORE, "0"},
    {"MAX_NOUT", KeyType::INT, &Params::MAX_NOUT, "20"},
    {"MAX_AOUT", KeyType::INT, &Params::MAX_AOUT, "20"},
    {"NPRINT_TO_THRESHOLD", KeyType::INT, &Params::NPRINT_TO_THRESHOLD, "1"},
    {"APRINT_TO_THRESHOLD", KeyType::INT, &Params::APRINT_TO_THRESHOLD, "1"},
    {"PROBCUT", KeyType::FLOAT, &Params::PROBCUT, "0.001"},
    {"PROBCUT2", KeyType::FLOAT, &Params::PROBCUT2, "0.00005"},
    {"APROBCUT", KeyType::FLOAT, &Params::APROBCUT, "1000.0"},
    {"PIDTHRESH", KeyType::DOUBLE, &Params::PIDTHRESH, "1.0"},
    {"POSWGTFAC", KeyType::DOUBLE, &Params::POSWGTFAC, "1.0"},
    {"PEN_FACTOR", KeyType::DOUBLE, &Params::PEN_FACTOR, "1.0"},
    {"NSUBSET", KeyType::INT, &Params::NSUBSET, "0"},
    {"FIT_TYPE", KeyType::INT, &Params::FIT_TYPE, "0"},
    {"TOP_ONLY", KeyType::INT, &Params::TOP_ONLY, "1"},
    {"TOP_CUTFRAC", KeyType::FLOAT, &Params::TOP_CUTFRAC, "0.1"},
    {"SCAN", KeyType::INT, &Params::SCAN, "0"},
    {"OUTPUT_LENGTH", KeyType::INT, &Params::OUTPUT_LENGTH, "50"},
    {"MULTIPLE_OUTPUT_LENGTH", KeyType::INT, &Params::MULTIPLE_OUTPUT_LENGTH, "40"},
    {"NRANS", KeyType::INT, &Params::NRANS, "0"},
    {"READ_PRED", KeyType::INT, &Params::READ_PRED, "0"},
    {"ROBSIM", KeyType::INT, &Params::ROBSIM, "0"},
    {"SAVE_PROFILES", KeyType::INT, &Params::SAVE_PROFILES, "0"},
    {"PCUT", KeyType::DOUBLE, &Params::PCUT, "0.0001"},
    {"PPERC", KeyType::DOUBLE, &Params::PPERC, "0.8"},
    {"NPROC", KeyType::INT, &Params::NPROC, "4"},
    {"NITER", KeyType::INT, &Params::NITER, "3"},
    {"LPFIT_MINBUCK", KeyType::INT, &Params::LPFIT_MINBUCK, "300"},
    {"LPFIT_MINRANGE", KeyType::INT, &Params::LPFIT_MINRANGE, "7"},
    {"LPFIT_LPLBUCKETWIDTH", KeyType::DOUBLE, &Params::LPFIT_LPLBUCKETWIDTH, "0.3"},
    {"LPFIT_PRINT", KeyType::INT, &Params::LPFIT_PRINT, "0"},
    {"PRINT_PROFILES", KeyType::INT, &Params::PRINT_PROFILES, "1"},
    {"PROFILE_WEIGHT_METHOD", KeyType::INT, &Params::PROFILE_WEIGHT_METHOD, "1"},
    {"PRINT_FRQ_TABS", KeyType::INT, &Params::PRINT_FRQ_TABS, "1"},
    {"PRINT_BLOCK_FILE", KeyType::INT, &Params::PRINT_BLOCK_FILE, "1"},
    {"PRINT_FRAG_FILE", KeyType::INT, &Params::PRINT_FRAG_FILE, "1"},
    {"CUT_CORNERS", KeyType::INT, &Params::CUT_CORNERS, "0"},
    {"AUTO_CORNER", KeyType::INT, &Params::AUTO_CORNER, "0"},
    {"CUT_CONSTANT", KeyType::REAL_TRUNCATED, &Params::CUT_CONSTANT, "1000"},
    {"RUN_SW_MIN", KeyType::INT, &Params::RUN_SW_MIN, "3500"},
    {"SPECIAL", KeyType::INT, &Params::SPECIAL, "0"},
    {"FIND_REPEATS", KeyType::INT, &Params::FIND_REPEATS, "0"},
    {"APPLY_INDEX", KeyType::INT, &Params::APPLY_INDEX, "0"},
    {"LOG_SCORES", KeyType::INT, &Params::LOG_SCORES, "0"},
    {"SHOW_TITLES", KeyType::INT, &Params::SHOW_TITLES, "0"},
    {"SHOW_TITLES_WIDTH", KeyType::INT, &Params::SHOW_TITLES_WIDTH, "30"},
    {"SHOW_IDENT_WIDTH", KeyType::INT, &Params::SHOW_IDENT_WIDTH, "16"},
    {"SHOW_LEN", KeyType::INT, &Params::SHOW_LEN, "0"},
    {"SHOW_BLURB", KeyType::INT, &Params::SHOW_BLURB, "1"},
    {"SHOW_PMATRIX", KeyType::INT, &Params::SHOW_PMATRIX, "0"},
    {"DO_SORT", KeyType::INT, &Params::DO_SORT, "1"},
    {"COMPLEMENT_QUERY", KeyType::INT, &Params::COMPLEMENT_QUERY, "0"},
    {"FAST", KeyType::INT, &Params::FAST, "0"},
    {"USE_GAPDEFS", KeyType::INT, &Params::USE_GAPDEFS, "1"},
    {"EXTRACT_SEQ", KeyType::INT, &Params::EXTRACT_SEQ, "0"},
    {"EXTRACT_SEQ_FORMAT", KeyType::INT, &Params::EXTRACT_SEQ_FORMAT, "0"},
    {"PRECISION", KeyType::PRECISION, &Params::PRECISION, "100"},
    {"MATRIX_FILE", KeyType::FILE_NAME, &Params::MATRIX_FILE, "md.mat"},
    {"MATRIX_FORMAT", KeyType::INT, &Params::MATRIX_FORMAT, "1"},
    {"QSEQ_FILE", KeyType::FILE_NAME, &Params::QSEQ_FILE, "test.seq"},
    {"QBLC_FILE", KeyType::FILE_NAME, &Params::QBLC_FILE, "test.seq"},
    {"SEC_FILE", KeyType::FILE_NAME, &Params::SEC_FILE, "test.sec"},
    {"OSEQ_FILE", KeyType::FILE_NAME, &Params::OSEQ_FILE, "test.oseq"},
    {"FIT_FILE", KeyType::FILE_NAME, &Params::FIT_FILE, "fits.md.8.dat"},
    {"DB_FILE", KeyType::FILE_NAME, &Params::DB_FILE, "data.seq"},
    {"DB_DIR", KeyType::TEXT, &Params::DB_DIR, "./"},
    {"GENERAL_DIR", KeyType::TEXT, &Params::GENERAL_DIR, "./"},
    {"BDB_ROOT", KeyType::DATABASE_ROOT, &Params::BDB_ROOT, "protein"},
    {"MATRIX_DIR", KeyType::TEXT, &Params::MATRIX_DIR, "./"},
    {"PRED_FILE", KeyType::FILE_NAME, &Params::PRED_FILE, "test.pre"},
    {"WEXFORD_FILE", KeyType::FILE_NAME, &Params::WEXFORD_FILE, "wexford.tst"},
    {"CODON_FILE", KeyType::FILE_NAME, &Params::CODON_FILE, "codo.tst"},
    {"EXTRACT_FILE", KeyType::FILE_NAME, &Params::EXTRACT_FILE, "zelvan_extract.seq"},
    {"BLOCK_FILE_OUT", KeyType::FILE_NAME, &Params::BLOCK_FILE_OUT, "block_file_out.blc"},
    {"FRAG_FILE_OUT", KeyType::FILE_NAME, &Params::FRAG_FILE_OUT, "frag_file_out.seq"},
    {"STDIN", KeyType::STREAM_IN, &Params::STDIN, nullptr},
    {"STDOUT", KeyType::STREAM_OUT, &Params::STDOUT, nullptr},
    {"STDERR", KeyType::STREAM_OUT, &Params::STDERR, nullptr},
};

double read_real(const char* value) {
  return std::strtod(value, nullptr);
}

int32_t check_precision(int32_t n, const char* caller) {
  if (n != 1 && n % 10 != 0) {
    errno = EINVAL;
    error(UTcat({"Invalid Precision multiplier in ", caller}).c_str(), 1);
  }
  return n;
}

void name_database(const char* root, Params* p) {
  p->BDB_GIVEN = 1;
  UTstrrename(p->BDB_ROOT, root);
  UTfilerename(p->BDB_INDEX_FILE, UTcat({p->DB_DIR, "/", root, ".bix"}).c_str());
  UTfilerename(p->BDB_SEQ_FILE, UTcat({p->DB_DIR, "/", root, ".bsq"}).c_str());
}

// What follows the digits of a number is ignored, and no digits count as 0: hardly what was meant.
void warn_of_no_number(const KeyEntry& key, const char* value, const Params* p) {
  const bool real = key.type == KeyType::REAL_SCALED || key.type == KeyType::REAL_TRUNCATED ||
                    key.type == KeyType::FLOAT || key.type == KeyType::DOUBLE;
  const bool whole =
      key.type == KeyType::INT || key.type == KeyType::INT_SCALED || key.type == KeyType::PRECISION;
  if (!real && !whole) return;
  char* end = nullptr;
  const double taken = real ? std::strtod(value, &end) : static_cast<double>(std::strtol(value, &end, 10));
  if (end != value && *end == '\0') return;
  std::fprintf(p->STDERR, "Warning: %s %.60s: the value is not a %snumber, %.10g is taken\n", key.name, value,
               whole ? "whole " : "", taken);
}

template <class T>
T& field_of(const KeyEntry& key, Params* p) {
  return p->*std::get<T Params::*>(key.field);
}

}  // namespace

int32_t integer_value(const char* value) {
  return UTtruncate(static_cast<double>(std::strtol(value, nullptr, 10)));
}

int32_t scaled_value(const char* value, int32_t precision) {
  return UTtruncate(read_real(value) * precision);
}

std::span<const KeyEntry> parameter_keys() {
  return KEYS;
}

const KeyEntry* find_key(const char* token, const Params* p) {
  for (const KeyEntry& key : KEYS) {
    if (alias(token, key.name, p->ALIASES) == 0) return &key;
  }
  return nullptr;
}

void store_value(const KeyEntry& key, const char* value, const char* caller, Params* p) {
  warn_of_no_number(key, value, p);
  switch (key.type) {
    case KeyType::INT:
      field_of<int32_t>(key, p) = integer_value(value);
      break;
    case KeyType::INT_SCALED:
      field_of<int32_t>(key, p) = UTtruncate(static_cast<double>(integer_value(value)) * p->PRECISION);
      break;
    case KeyType::REAL_SCALED:
      field_of<int32_t>(key, p) = scaled_value(value, p->PRECISION);
      break;
    case KeyType::REAL_TRUNCATED:
      field_of<int32_t>(key, p) = UTtruncate(read_real(value));
      break;
    case KeyType::FLOAT:
      field_of<float>(key, p) = static_cast<float>(read_real(value));
      break;
    case KeyType::DOUBLE:
      field_of<double>(key, p) = read_real(value);
      break;
    case KeyType::CHAR:
      field_of<char>(key, p) = value[0];
      break;
    case KeyType::PRECISION:
      field_of<int32_t>(key, p) = check_precision(integer_value(value), caller);
      break;
    case KeyType::FILE_NAME:
      UTfilerename(field_of<FileRec>(key, p), value).given = true;
      break;
    case KeyType::TEXT:
      UTstrrename(field_of<UTstring>(key, p), value);
      break;
    case KeyType::DATABASE_ROOT:
      name_database(value, p);
      break;
    case KeyType::STREAM_IN:
      field_of<FILE*>(key, p) = UTfopen(value, "r", 1);
      break;
    case KeyType::STREAM_OUT:
      field_of<FILE*>(key, p) = UTopen_stream(value);
      break;
  }
}

void set_defaults(Params* p) {
  p->PRECISION = 100;
  for (const KeyEntry& key : KEYS) {
    if (key.type == KeyType::DATABASE_ROOT) {
      UTstrrename(p->BDB_ROOT, key.initial);  // the name alone: no binary database was asked for
    } else if (key.type == KeyType::FILE_NAME) {
      UTfilerename(field_of<FileRec>(key, p), key.initial);
    } else if (key.initial != nullptr) {
      store_value(key, key.initial, "", p);
    }
  }
  p->BDB_INDEX_FILE = UTfilemake("bdbi.bix", "r", 0);
  p->BDB_SEQ_FILE = UTfilemake("bdbs.bsq", "r", 0);
  p->STDIN = stdin;
  p->STDOUT = stdout;
  p->STDERR = stderr;
}

}  // namespace zelvan
