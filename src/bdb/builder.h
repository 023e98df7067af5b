// The binary database: an index file (header, then one record of six 32-bit integers per sequence) and a
// sequence file (identifier, title and residue buffer of every sequence back to back), both in the machine's
// byte order.
#pragma once

#include "driver/params.h"

// makedb - mode 99: reads the text database DB_FILE and writes the two files of BDB_ROOT. They appear under
// their names only when complete.
void makedb(Params* p);
