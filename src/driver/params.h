// The parameter record: all configuration of a run and the little state through which drivers and reports
// talk. One record is built at start-up and lives for the whole process. Every folder may include this
// header; it only forward-declares what it points to.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

#include "util/buffer_sizes.h"
#include "util/file_record.h"
#include "util/memory.h"

namespace zelvan {

struct ScoreMatrix;
struct BdbInfo;
struct LpfitData;

// One line of the alias file: the key first in `words`, then its other spellings.
struct AliasEntry {
  UTstring name;
  UTvector<UTstring> words;
  UTstring comment;
};
using AliasTable = UTvector<AliasEntry>;

// Penalties that suit one matrix in one family of modes, in score units x PRECISION.
struct GapDefault {
  int32_t mode = 0;  // 0 for the modes 200 and 210, 2 for 202 and 212, otherwise the mode itself
  UTstring matrix;   // compared with the whole MATRIX_FILE name
  int32_t ld_pen = 0;
  int32_t li_pen = 0;
  int32_t fs_pen = 0;
  int32_t fse_pen = 0;
};

struct Params {
  // ---- keys, named as in the configuration; key_table.cpp holds their types and defaults, the alias file
  // ---- their descriptions. Penalties and score thresholds are scaled by PRECISION when they are read.
  int32_t MAX_NSEQ = 0;
  char GAP_CHARACTER = 0;
  char FGAP_CHARACTER = 0;
  char IGAP_CHARACTER = 0;
  char STOP_CHARACTER = 0;
  float OUTLEN_INCREASE_FACTOR = 0;
  int32_t TIME = 0;
  int32_t MODE = 0;
  int32_t MIXED_MODE = 0;
  int32_t QSEQ_FORMAT = 0;
  int32_t QBLC_FORMAT = 0;
  int32_t DB_FORMAT = 0;
  int32_t FRAG_FILE_FORMAT = 0;
  int32_t MAX_SEQ_LEN = 0;
  int32_t VERBOSE = 0;
  int32_t MAX_ID_LEN = 0;
  int32_t MAX_TITLE_LEN = 0;
  int32_t MAX_BLOC_SEQ = 0;
  int32_t DUMP_STATS = 0;
  int32_t DO_STATS = 0;
  int32_t PROB_TYPE = 0;
  int32_t MIN_NSTATS = 0;
  int32_t LD_PEN = 0;
  int32_t LI_PEN = 0;
  int32_t FS_PEN = 0;
  int32_t FSE_PEN = 0;
  int32_t EPL_PEN = 0;
  int32_t EPR_PEN = 0;
  int32_t EPT_PEN = 0;
  int32_t EPB_PEN = 0;
  int32_t MM_LD_PEN = 0;
  int32_t STOP_WEIGHT = 0;
  int32_t MIN_SCORE = 0;
  int32_t MIN_LEN = 0;
  int32_t MIN_ASCORE = 0;
  int32_t MAX_NOUT = 0;
  int32_t MAX_AOUT = 0;
  int32_t NPRINT_TO_THRESHOLD = 0;
  int32_t APRINT_TO_THRESHOLD = 0;
  float PROBCUT = 0;
  float PROBCUT2 = 0;
  float APROBCUT = 0;
  double PIDTHRESH = 0;
  double POSWGTFAC = 0;
  double PEN_FACTOR = 0;
  int32_t NSUBSET = 0;
  int32_t FIT_TYPE = 0;
  int32_t TOP_ONLY = 0;
  float TOP_CUTFRAC = 0;
  int32_t SCAN = 0;
  int32_t OUTPUT_LENGTH = 0;
  int32_t MULTIPLE_OUTPUT_LENGTH = 0;
  int32_t NRANS = 0;
  int32_t READ_PRED = 0;
  int32_t ROBSIM = 0;
  int32_t SAVE_PROFILES = 0;
  double PCUT = 0;
  double PPERC = 0;
  int32_t NPROC = 0;
  int32_t NITER = 0;
  int32_t LPFIT_MINBUCK = 0;
  int32_t LPFIT_MINRANGE = 0;
  double LPFIT_LPLBUCKETWIDTH = 0;
  int32_t LPFIT_PRINT = 0;
  int32_t PRINT_PROFILES = 0;
  int32_t PROFILE_WEIGHT_METHOD = 0;
  int32_t PRINT_FRQ_TABS = 0;
  int32_t PRINT_BLOCK_FILE = 0;
  int32_t PRINT_FRAG_FILE = 0;
  int32_t CUT_CORNERS = 0;
  int32_t AUTO_CORNER = 0;
  int32_t CUT_CONSTANT = 0;
  int32_t RUN_SW_MIN = 0;
  int32_t SPECIAL = 0;
  int32_t FIND_REPEATS = 0;
  int32_t APPLY_INDEX = 0;
  int32_t LOG_SCORES = 0;
  int32_t SHOW_TITLES = 0;
  int32_t SHOW_TITLES_WIDTH = 0;
  int32_t SHOW_IDENT_WIDTH = 0;
  int32_t SHOW_LEN = 0;
  int32_t SHOW_BLURB = 0;
  int32_t SHOW_PMATRIX = 0;
  int32_t DO_SORT = 0;
  int32_t COMPLEMENT_QUERY = 0;
  int32_t FAST = 0;
  int32_t USE_GAPDEFS = 0;
  int32_t EXTRACT_SEQ = 0;
  int32_t EXTRACT_SEQ_FORMAT = 0;
  int32_t PRECISION = 0;
  FileRec MATRIX_FILE;
  int32_t MATRIX_FORMAT = 0;
  FileRec QSEQ_FILE;
  FileRec QBLC_FILE;
  FileRec SEC_FILE;
  FileRec OSEQ_FILE;
  FileRec FIT_FILE;
  FileRec DB_FILE;
  UTstring DB_DIR;
  UTstring GENERAL_DIR;
  UTstring BDB_ROOT;
  UTstring MATRIX_DIR;
  FileRec PRED_FILE;
  FileRec WEXFORD_FILE;
  FileRec CODON_FILE;
  FileRec EXTRACT_FILE;
  FileRec BLOCK_FILE_OUT;
  FileRec FRAG_FILE_OUT;
  FILE* STDIN = nullptr;
  FILE* STDOUT = nullptr;
  FILE* STDERR = nullptr;

  // ---- state of the run
  int32_t SUCCESS = 0;                   // 1: configuration read; -1: not
  UTstring TOKEN_SEPARATORS = " ,\n\t";  // of every configuration file
  int32_t LINE_BUFFER_LEN = LINE_BUFFER_SIZE;
  AliasTable ALIASES;  // consulted by every key match
  UTstring VERSION;    // ends in a newline
  UTvector<GapDefault> GAPDEFS;
  int32_t NGAPDEFS = 0;
  int32_t GAPDEFS_CAPACITY = 500;
  int32_t BDB_GIVEN = 0;        // 1: a binary database was named; drivers then search it
  FileRec BDB_INDEX_FILE;       // ".bix"
  FileRec BDB_SEQ_FILE;         // ".bsq"
  int32_t n_probcut2_hits = 0;  // hits at or below PROBCUT2 in the latest score list
  int32_t ITERATION = 0;        // current iteration, from 0
  double DB_QUERY_RATIO = 0;    // residues of the database / residues of the query
  BdbInfo* binfo = nullptr;     // header of the database in use; not owned
  LpfitData* lpfit = nullptr;   // statistics of the current iteration; not owned
  // The loaded matrix; a copy of the record shares it.
  std::shared_ptr<ScoreMatrix> matrix;
};

// GetPars - builds the record: defaults, alias table, defaults file.
// Returns the record, always, for the caller to keep for the run; SUCCESS is 1 when the whole file was read,
//        else -1 (reported)
// Ends   on a refused PRECISION (status 0) and on a stream key whose file cannot be opened (status 1)
Params GetPars(const char* defaults_path, const char* alias_path);

}  // namespace zelvan
