#pragma once
// Text of tag chunks: this system writes UTF-8 everywhere; what it reads may be
// UTF-8, Latin-1 (older RIFF writers) or UTF-16 (ID3), and comes back as UTF-8.
#include <cstddef>

#include "base/string_long.h"

// True when the bytes are well-formed UTF-8.
[[nodiscard]] bool LTextIsUtf8(const char* text, std::size_t length);

// The text of a fixed-width or zero-terminated field: cut at the first zero
// byte, kept as it is when it is UTF-8, else read as Latin-1.
[[nodiscard]] LStringLong LTextFromField(const unsigned char* bytes, std::size_t length);

// UTF-16 (little- or big-endian) to UTF-8; unpaired surrogates become U+FFFD.
[[nodiscard]] LStringLong LTextFromUtf16(const unsigned char* bytes, std::size_t length, bool bigEndian);

// The longest prefix of at most width bytes that does not split a UTF-8 character.
[[nodiscard]] std::size_t LTextUtf8CutLength(const char* text, std::size_t length, std::size_t width);
