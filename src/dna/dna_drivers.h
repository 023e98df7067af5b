// Protein against DNA, translated in three reading frames with frame shifts.
#pragma once

#include "driver/params.h"

void swipd(Params* p);    // mode 10: protein query, DNA database, one plain line per sequence
void swaipd2(Params* p);  // mode 12: protein query, DNA database
void swadp(Params* p);    // mode 20: DNA query, protein database, linear gaps
void swaidp2(Params* p);  // mode 22: DNA query, protein database, affine gaps
