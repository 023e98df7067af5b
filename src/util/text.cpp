#include "util/text.h"

#include <algorithm>
#include <cstring>

namespace zelvan {

UTstring UTstrdup(const char* text) {
  return UTstring(text);
}

UTstring& UTstrrename(UTstring& owned, const char* new_text) {
  owned = new_text;
  return owned;
}

UTvector<char> UTstrcreate(std::size_t size) {
  UTvector<char> buffer(size);
  buffer.back() = '\0';
  return buffer;
}

UTstring UTcat(std::initializer_list<std::string_view> texts) {
  std::size_t length = 0;
  for (std::string_view text : texts) length += text.size();
  UTstring joined;
  joined.reserve(length);
  for (std::string_view text : texts) joined.append(text);
  return joined;
}

UTstring& UTremovechar2(UTstring& text, char unwanted) {
  text.erase(std::remove(text.begin(), text.end(), unwanted), text.end());
  return text;
}

bool UTgettokens(const char* separators, const char* text, TokenList& out_tokens) {
  out_tokens.tokens.clear();
  const char* at = text + std::strspn(text, separators);
  while (*at != '\0') {
    const std::size_t length = std::strcspn(at, separators);
    out_tokens.tokens.emplace_back(at, length);
    at += length;
    at += std::strspn(at, separators);
  }
  out_tokens.count = static_cast<int32_t>(out_tokens.tokens.size());
  return out_tokens.count > 0;
}

void UTfreetokens(TokenList& tokens) {
  tokens = TokenList();
}

void UTpstring(FILE* stream, const char* text, int32_t width) {
  if (width > 0)
    UTpTITLEstring(stream, text, width,
                   static_cast<int32_t>(strnlen(text, static_cast<std::size_t>(width) + 1)));
}

void UTpTITLEstring(FILE* stream, const char* text, int32_t width, int32_t length) {
  const int32_t shown = std::min(width, length);
  if (shown > 0) std::fwrite(text, 1, static_cast<std::size_t>(shown), stream);
  for (int32_t k = length; k < width; ++k) std::fputc(' ', stream);
}

void UTpline(FILE* stream, char character, int32_t n) {
  for (int32_t k = 0; k < n; ++k) std::fputc(character, stream);
  std::fputc('\n', stream);
}

}  // namespace zelvan
