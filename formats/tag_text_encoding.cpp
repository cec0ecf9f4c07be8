#include "formats/tag_text_encoding.h"

#include <cstdint>

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;
constexpr std::uint32_t kSurrogateFirst = 0xD800;
constexpr std::uint32_t kLowSurrogateFirst = 0xDC00;
constexpr std::uint32_t kSurrogateLast = 0xDFFF;

void AppendUtf8(LStringLong& out, std::uint32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

// Length of the UTF-8 sequence that starts with lead, 0 for a byte that cannot start one.
std::size_t SequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 0;
}

}  // namespace

bool LTextIsUtf8(const char* text, std::size_t length) {
  const auto* p = reinterpret_cast<const unsigned char*>(text);
  std::size_t i = 0;
  while (i < length) {
    const std::size_t n = SequenceLength(p[i]);
    if (n == 0 || i + n > length) return false;
    for (std::size_t k = 1; k < n; ++k) {
      if ((p[i + k] & 0xC0) != 0x80) return false;
    }
    // Overlong three- and four-byte forms, surrogates and values past U+10FFFF.
    if (n == 3 && ((p[i] == 0xE0 && p[i + 1] < 0xA0) || (p[i] == 0xED && p[i + 1] >= 0xA0))) return false;
    if (n == 4 && ((p[i] == 0xF0 && p[i + 1] < 0x90) || (p[i] == 0xF4 && p[i + 1] >= 0x90))) return false;
    i += n;
  }
  return true;
}

LStringLong LTextFromField(const unsigned char* bytes, std::size_t length) {
  std::size_t n = 0;
  while (n < length && bytes[n] != 0) ++n;
  const auto* text = reinterpret_cast<const char*>(bytes);
  if (LTextIsUtf8(text, n)) return LStringLong(text, n);
  LStringLong out;
  out.reserve(n * 2);
  for (std::size_t i = 0; i < n; ++i) AppendUtf8(out, bytes[i]);
  return out;
}

LStringLong LTextFromUtf16(const unsigned char* bytes, std::size_t length, bool bigEndian) {
  LStringLong out;
  auto unit = [&](std::size_t at) -> std::uint32_t {
    return bigEndian ? (static_cast<std::uint32_t>(bytes[at]) << 8 | bytes[at + 1])
                     : (static_cast<std::uint32_t>(bytes[at + 1]) << 8 | bytes[at]);
  };
  std::size_t i = 0;
  while (i + 1 < length) {
    std::uint32_t c = unit(i);
    i += 2;
    if (c >= kSurrogateFirst && c <= kSurrogateLast) {
      if (c < kLowSurrogateFirst && i + 1 < length) {
        const std::uint32_t low = unit(i);
        if (low >= kLowSurrogateFirst && low <= kSurrogateLast) {
          i += 2;
          c = 0x10000 + ((c - kSurrogateFirst) << 10) + (low - kLowSurrogateFirst);
          AppendUtf8(out, c);
          continue;
        }
      }
      c = kReplacement;
    }
    AppendUtf8(out, c);
  }
  return out;
}

std::size_t LTextUtf8CutLength(const char* text, std::size_t length, std::size_t width) {
  if (length <= width) return length;
  std::size_t n = width;
  // Step back over continuation bytes to the start of the character that would be split.
  while (n > 0 && (static_cast<unsigned char>(text[n]) & 0xC0) == 0x80) --n;
  return n;
}
