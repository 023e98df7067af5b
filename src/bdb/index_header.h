// The bytes of an index file, for those that write one (its layout: index_record.h).
#pragma once

#include <cstdint>

#include "bdb/index_record.h"
#include "driver/params.h"
#include "seq/database_info.h"
#include "seq/matrix.h"
#include "util/memory.h"

namespace zelvan {

// describe_database - the header of a database of `nseq` sequences, made now from DB_FILE.
// In     counts within 32 bits
BdbInfo describe_database(int64_t nseq, int64_t nres, int64_t totchar, const ScoreMatrix& matrix,
                          const Params* p);

// header_bytes - the header as it stands in the file.
UTvector<char> header_bytes(const BdbInfo& info);

// record_at - the record of a sequence whose identifier lies at `at`.
IndexRecord record_at(int32_t at, int32_t ilen, int32_t tlen, int32_t len);

}  // namespace zelvan
