#include "util/text_start.h"

#include <algorithm>
#include <string_view>

#include "util/failure.h"
#include "util/streams.h"

namespace zelvan {
namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

// Start of a file; "?" stands for any byte. None has a zero byte, a newline or a carriage return, so that the
// first line of a text shows it as well.
struct Signature {
  std::string_view bytes;
  const char* program;
  const char* unpacks;
};

constexpr Signature SIGNATURES[] = {
    {"\x1F\x8B\x08", "gzip", "zcat"}, {"BZh?1AY", "bzip2", "bzcat"},
    {"BZh?\x17rE", "bzip2", "bzcat"},  // of nothing
    {"\3757zXZ", "xz", "xzcat"},      {"\x28\xB5\x2F\xFD", "zstd", "zstdcat"},
};

bool begins_with(std::string_view text, std::string_view signature) {
  return text.size() >= signature.size() &&
         std::equal(signature.begin(), signature.end(), text.begin(),
                    [](char expected, char byte) { return expected == '?' || byte == expected; });
}

}  // namespace

std::size_t UTmark_length(const char* bytes, std::size_t n) {
  return begins_with({bytes, n}, BYTE_ORDER_MARK) ? BYTE_ORDER_MARK.size() : 0;
}

void UTskip_mark(UTvector<char>& line) {
  const std::size_t mark = UTmark_length(line.data(), line.size());
  std::copy(line.begin() + static_cast<std::ptrdiff_t>(mark), line.end(), line.begin());
}

void UTrefuse_compressed(const char* bytes, std::size_t n, const char* name, const char* how) {
  for (const Signature& signature : SIGNATURES) {
    if (begins_with({bytes, n}, signature.bytes)) {
      UTend_input(std_err, "%s is compressed (%s). Pass what is in it: %s %s %s\n", name, signature.program,
                  signature.unpacks, name, how);
    }
  }
}

}  // namespace zelvan
