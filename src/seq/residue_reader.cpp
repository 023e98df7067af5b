#include "seq/residue_reader.h"

#include <cstddef>
#include <cstring>

namespace zelvan {

PairCodes make_pair_codes(const ScoreMatrix& matrix) {
  PairCodes codes;
  for (std::size_t pair = 0; pair < codes.size(); ++pair) {
    const auto letters = static_cast<uint16_t>(pair);
    int8_t bytes[2];
    std::memcpy(bytes, &letters, sizeof letters);
    for (int8_t& byte : bytes) byte = residue_code(matrix, byte);
    std::memcpy(&codes[pair], bytes, sizeof letters);
  }
  return codes;
}

void encode_pairs(const int8_t* from, int32_t len, const PairCodes& codes, int8_t* to) {
  const int8_t last = from[len - 1];
  int32_t i = 0;
  for (; i + 2 <= len; i += 2) {
    uint16_t letters;
    std::memcpy(&letters, from + i, sizeof letters);
    std::memcpy(to + i, &codes[letters], sizeof letters);
  }
  to[len - 1] = last;  // what an odd length leaves over, and the zero byte of an even one
}

}  // namespace zelvan
