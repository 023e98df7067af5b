// Texts: copies, joins, tokens, and fields of a fixed width.
#pragma once

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <string_view>

#include "util/memory.h"

namespace zelvan {

// UTstrdup - a copy of a text.
UTstring UTstrdup(const char* text);

// UTstrrename - replaces the contents of an owned text by `new_text`; returns the text.
UTstring& UTstrrename(UTstring& owned, const char* new_text);

// UTstrcreate - a buffer of `size` bytes (size >= 1) whose last byte is zero.
UTvector<char> UTstrcreate(std::size_t size);

// UTcat - the texts joined in order with nothing between them.
UTstring UTcat(std::initializer_list<std::string_view> texts);

// UTremovechar2 - removes every occurrence of a character in place; returns the same text.
UTstring& UTremovechar2(UTstring& text, char unwanted);

// The tokens of one text: `count` == tokens.size(), at least 1 when UTgettokens made it.
struct TokenList {
  int32_t count = 0;
  UTvector<UTstring> tokens;
};

// UTgettokens - splits a text at every run of separator characters.
// Does   separators at either end produce no empty token; `text` ends at its first zero byte
// Out    out_tokens replaced
// Returns false, with an empty list, when the text holds no token
bool UTgettokens(const char* separators, const char* text, TokenList& out_tokens);

// UTfreetokens - releases the tokens of a list.
void UTfreetokens(TokenList& tokens);

// UTpstring - writes exactly `width` characters: the text followed by blanks, or its first `width`
// characters.
void UTpstring(FILE* stream, const char* text, int32_t width);

// UTpTITLEstring - the same for a text of known length that need not be terminated; at most `length` of its
// characters are read. With width <= 0 and length > width nothing is written.
void UTpTITLEstring(FILE* stream, const char* text, int32_t width, int32_t length);

// UTpline - writes the character n times, then a newline (only the newline when n <= 0).
void UTpline(FILE* stream, char character, int32_t n);

}  // namespace zelvan
