// The alias file: every settable key with its short spellings and a one-line description. A key that the file
// does not list cannot be set, not even under its full name.
#pragma once

#include "driver/params.h"

namespace zelvan {

// read_aliases - reads the alias file, one entry a line ("KEY alias ... # description"); the first empty line
// ends it.
// Out    out_table replaced
// Returns false after a report on std_err, with p->SUCCESS = -1, when the file cannot be opened or a line
//        does not consist of words, one "#" and a description
bool read_aliases(const char* path, AliasTable& out_table, Params* p);

// alias - 0 when the token (one leading "-" ignored) is one of the words listed for the key, else -1.
int32_t alias(const char* token, const char* key, const AliasTable& table);

}  // namespace zelvan
