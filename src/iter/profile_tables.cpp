#include "iter/profile_tables.h"

#include "util/streams.h"

namespace zelvan {

void print_frequency_table(int32_t qlen, const LookupTable& count, const ScoreMatrix& matrix,
                           const Params* p) {
  std::fprintf(std_out, "# Frequency table derived from iteration: %d\n", p->ITERATION);
  PrintLookup3(qlen, count, matrix, std_out);
}

void print_profile(int32_t qlen, const LookupTable& table, const ScoreMatrix& matrix, const Params* p) {
  std::fprintf(std_out, "#\n# Lookup table (profile) derived from iteration: %d\n", p->ITERATION);
  PrintLookup4(qlen, table, matrix, std_out, p);
}

}  // namespace zelvan
