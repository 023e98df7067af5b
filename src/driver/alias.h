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

// nearest_word - the word of the table that a misspelt option (leading "-" ignored) most likely stands for.
// Does   counts letters put in, left out, wrong or exchanged, one in three of the token's letters at most; of
//        words as near the first in the table, of the spellings of one key the last
// Returns a word of the table, or null when none is near
const char* nearest_word(const char* token, const AliasTable& table);

}  // namespace zelvan
