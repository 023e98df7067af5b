// The sizes of buffers, in bytes. In fuzz programs they are small: short inputs then cross their edges, too.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef ZELVAN_SMALL_BUFFERS
namespace zelvan {

constexpr int32_t LINE_BUFFER_SIZE = 200;
constexpr std::size_t READ_BUFFER_SIZE = 61;
constexpr std::size_t SEQ_BLOCK_SIZE = 1000;

}  // namespace zelvan
#else
namespace zelvan {

constexpr int32_t LINE_BUFFER_SIZE = 100'000;                     // a longer line is read as several
constexpr std::size_t READ_BUFFER_SIZE = std::size_t{256} << 10;  // a piece of a sequence file
constexpr std::size_t SEQ_BLOCK_SIZE = std::size_t{4} << 20;  // of a SeqStore; larger ones are made to fit

}  // namespace zelvan
#endif
