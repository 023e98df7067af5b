// The banner and the brief help.
#pragma once

#include <cstdio>

#include "driver/params.h"

namespace zelvan {

// Who made the program, two lines without newline: the banner shows the first, the header of a report both as
// comments ("# " in front).
inline constexpr const char* CREDIT_LINES[2] = {
    "Written by the ZELVAN developers",
    "Free software under the 3-clause BSD licence, without any warranty",
};

// ZELVAN_PrintOptions - writes the banner and the brief help, then ends the run (status -1).
// In     aliases: not read; version: ends in a newline
[[noreturn]] void ZELVAN_PrintOptions(FILE* stream, const AliasTable& aliases, const char* version);

// ZELVAN_BriefHelp - writes the brief help when flag is 0, nothing otherwise.
void ZELVAN_BriefHelp(FILE* stream, int32_t flag);

}  // namespace zelvan
