// The banner and the brief help.
#pragma once

#include <cstdio>

#include "driver/params.h"

// ZELVAN_PrintOptions - writes the banner and the brief help, then ends the run (status -1).
[[noreturn]] void ZELVAN_PrintOptions(FILE* stream, const AliasTable& aliases, const char* version);

// ZELVAN_BriefHelp - writes the brief help when flag is 0, nothing otherwise.
void ZELVAN_BriefHelp(FILE* stream, int32_t flag);
