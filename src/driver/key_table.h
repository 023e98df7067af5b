// The one table of parameter keys: name, type, field and default. Defaults, the defaults file, the command
// line and the completeness checks of alias file and manual all follow from it.
#pragma once

#include <span>
#include <variant>

#include "driver/params.h"

namespace zelvan {

enum class KeyType {
  INT,             // base-10 integer, trailing junk ignored, no digits: 0
  INT_SCALED,      // the same, times the PRECISION in force
  REAL_SCALED,     // decimal times PRECISION, truncated toward zero
  REAL_TRUNCATED,  // decimal truncated toward zero
  FLOAT,
  DOUBLE,
  CHAR,       // first character of the value
  PRECISION,  // integer, 1 or a multiple of 10
  FILE_NAME,  // names a file, opened later
  TEXT,
  DATABASE_ROOT,  // names the binary database and its two files
  STREAM_IN,      // a file opened at once
  STREAM_OUT,
};

using KeyField = std::variant<int32_t Params::*, float Params::*, double Params::*, char Params::*,
                              FileRec Params::*, UTstring Params::*, FILE * Params::*>;

struct KeyEntry {
  const char* name;
  KeyType type;
  KeyField field;
  const char* initial;  // default, as it would stand in a configuration file read with PRECISION 100
};

// integer_value - the base-10 integer at the start of a text; 0 without digits, clamped to 32 bits.
int32_t integer_value(const char* value);

// scaled_value - the decimal at the start of a text times `precision`, truncated toward zero in double
// precision (0.29 times 100 gives 28), clamped to 32 bits.
int32_t scaled_value(const char* value, int32_t precision);

// parameter_keys - the table, in the order in which keys are tried (the first match wins).
std::span<const KeyEntry> parameter_keys();

// find_key - the first key that a token names according to the alias table (one leading "-" ignored), or
// null.
const KeyEntry* find_key(const char* token, const Params* p);

// store_value - converts a value by the key's type and stores it.
// Does   warns on p->STDERR of a value that is not, or not wholly, the number that the key wants
// In     caller: "getpars" or "getcmd", the last word of the message about a refused PRECISION
// Ends   on a refused PRECISION (status 0) and on a stream that cannot be opened (status 1)
void store_value(const KeyEntry& key, const char* value, const char* caller, Params* p);

// set_defaults - gives every key its default.
void set_defaults(Params* p);

}  // namespace zelvan
