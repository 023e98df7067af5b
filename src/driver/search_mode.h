// What MODE asks of a search. This is the one place that knows the numbers; what a run does as a whole is
// chosen in main.cpp.
#pragma once

#include <cstdint>

namespace zelvan {

// The two modes that mixed searches go through, which 0 and 2 are short for.
constexpr int32_t LINEAR_MODE = 200;
constexpr int32_t AFFINE_MODE = 202;

enum class Comparison {
  NONE,                // not a search
  PROTEINS,            // a protein against proteins, iterated
  TRANSLATED_TARGETS,  // a protein against DNA, with frame shifts
  TRANSLATED_QUERY,    // a DNA against proteins, with frame shifts
};

struct SearchMode {
  Comparison comparison = Comparison::NONE;
  bool affine = false;  // LI_PEN opens a gap and LD_PEN extends it; otherwise every gap position costs LD_PEN
  bool gaps_by_position = false;      // penalties come from the gap rows of the lookup table
  bool extends_frame_shifts = false;  // FSE_PEN is shown beside FS_PEN
};

// decode_mode - a number of no search gives Comparison::NONE.
SearchMode decode_mode(int32_t mode);

// reads_text_only - whether the mode takes its database from DB_FILE whatever BDB_ROOT says.
bool reads_text_only(int32_t mode);

}  // namespace zelvan
