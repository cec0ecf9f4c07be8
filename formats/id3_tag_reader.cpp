#include "formats/id3_tag_reader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "formats/id3_frame_table.h"
#include "formats/tag_text_encoding.h"

namespace {

// ID3v2 layout (on disk, never change).
constexpr int kHeaderBytes = 10;
constexpr int kVersionOffset = 3;
constexpr int kFlagsOffset = 5;
constexpr int kSizeOffset = 6;
constexpr unsigned char kFlagUnsynchronised = 0x80;
constexpr unsigned char kFlagExtendedHeader = 0x40;
// Frame flags of 2.3 (second flag byte).
constexpr unsigned char kFrame23Compressed = 0x80;
constexpr unsigned char kFrame23Encrypted = 0x40;
constexpr unsigned char kFrame23Grouped = 0x20;
// Frame flags of 2.4 (second flag byte).
constexpr unsigned char kFrame24Grouped = 0x40;
constexpr unsigned char kFrame24Compressed = 0x08;
constexpr unsigned char kFrame24Encrypted = 0x04;
constexpr unsigned char kFrame24Unsynchronised = 0x02;
constexpr unsigned char kFrame24DataLength = 0x01;
// Text encodings.
constexpr unsigned char kEncodingLatin1 = 0;
constexpr unsigned char kEncodingUtf16Bom = 1;
constexpr unsigned char kEncodingUtf16BE = 2;
constexpr unsigned char kEncodingUtf8 = 3;
constexpr int kCommentLanguageBytes = 3;
// Several values in one text frame are joined with this.
constexpr char kValueSeparator[] = "/";

std::uint32_t Syncsafe(const unsigned char* p) {
  return static_cast<std::uint32_t>(p[0] & 0x7F) << 21 | static_cast<std::uint32_t>(p[1] & 0x7F) << 14 |
         static_cast<std::uint32_t>(p[2] & 0x7F) << 7 | static_cast<std::uint32_t>(p[3] & 0x7F);
}
std::uint32_t BE32(const unsigned char* p) {
  return static_cast<std::uint32_t>(p[0]) << 24 | static_cast<std::uint32_t>(p[1]) << 16 |
         static_cast<std::uint32_t>(p[2]) << 8 | p[3];
}
std::uint32_t BE24(const unsigned char* p) {
  return static_cast<std::uint32_t>(p[0]) << 16 | static_cast<std::uint32_t>(p[1]) << 8 | p[2];
}

// Removes the zero byte that unsynchronisation puts after every 0xFF.
LArray<unsigned char> Resynchronise(const unsigned char* p, std::size_t n) {
  LArray<unsigned char> out;
  out.reserve(n);
  for (std::size_t i = 0; i < n; ++i) {
    out.push_back(p[i]);
    if (p[i] == 0xFF && i + 1 < n && p[i + 1] == 0) ++i;
  }
  return out;
}

// Length of one string of the encoding, and of its terminator when there is one.
std::size_t StringLength(unsigned char encoding, const unsigned char* p, std::size_t n, std::size_t* terminator) {
  const bool wide = encoding == kEncodingUtf16Bom || encoding == kEncodingUtf16BE;
  const std::size_t step = wide ? 2 : 1;
  for (std::size_t i = 0; i + step <= n; i += step) {
    if (p[i] == 0 && (!wide || p[i + 1] == 0)) {
      *terminator = step;
      return i;
    }
  }
  *terminator = 0;
  return wide ? n & ~std::size_t{1} : n;
}

LStringLong Decode(unsigned char encoding, const unsigned char* p, std::size_t n) {
  switch (encoding) {
    case kEncodingUtf16Bom:
      if (n >= 2 && p[0] == 0xFE && p[1] == 0xFF) return LTextFromUtf16(p + 2, n - 2, true);
      if (n >= 2 && p[0] == 0xFF && p[1] == 0xFE) return LTextFromUtf16(p + 2, n - 2, false);
      return LTextFromUtf16(p, n, false);
    case kEncodingUtf16BE:
      return LTextFromUtf16(p, n, true);
    case kEncodingUtf8:
    case kEncodingLatin1:
    default:
      // Latin-1 text that happens to be valid UTF-8 is pure ASCII, so one decoder serves both.
      return LTextFromField(p, n);
  }
}

// All strings of a text frame body (after the encoding byte), joined.
LStringLong DecodeStrings(unsigned char encoding, const unsigned char* p, std::size_t n) {
  LStringLong out;
  while (n > 0) {
    std::size_t terminator = 0;
    const std::size_t length = StringLength(encoding, p, n, &terminator);
    LStringLong part = Decode(encoding, p, length);
    if (!part.empty()) {
      if (!out.empty()) out += kValueSeparator;
      out += part;
    }
    if (terminator == 0) break;
    p += length + terminator;
    n -= length + terminator;
  }
  return out;
}

struct Frame {
  char id[5] = {};
  const unsigned char* data = nullptr;
  std::size_t size = 0;
};

class Reader {
public:
  LArray<LFileTag> tags;

  void Add(const char* key, LStringLong value) {
    if (value.empty()) return;
    for (const LFileTag& tag : tags) {
      if (tag.key == key) return;
    }
    tags.push_back(LFileTag{key, std::move(value)});
  }

  void FrameRead(const Frame& frame, bool v22) {
    if (frame.size < 1) return;
    const unsigned char encoding = frame.data[0];
    const bool comment = std::strcmp(frame.id, v22 ? kLId3FrameComment22 : kLId3FrameComment) == 0;
    if (comment) {
      if (frame.size < 1 + kCommentLanguageBytes) return;
      const unsigned char* p = frame.data + 1 + kCommentLanguageBytes;
      std::size_t n = frame.size - 1 - kCommentLanguageBytes;
      std::size_t terminator = 0;
      const std::size_t descriptionLength = StringLength(encoding, p, n, &terminator);
      if (terminator == 0) return;
      const bool described = descriptionLength > 0;
      p += descriptionLength + terminator;
      n -= descriptionLength + terminator;
      LStringLong text = DecodeStrings(encoding, p, n);
      // A described comment (a player's private note) is taken only when no plain one comes.
      if (described) {
        pendingComment_ = pendingComment_.empty() ? text : pendingComment_;
      } else {
        Add("COMMENT", std::move(text));
      }
      return;
    }
    if (frame.id[0] != 'T') return;
    const char* key = nullptr;
    for (const LId3FrameKey& entry : kLId3FrameKeys) {
      if (std::strcmp(v22 ? entry.frame22 : entry.frame, frame.id) == 0) key = entry.key;
    }
    if (!key && !v22 && std::strcmp(frame.id, kLId3FrameYear) == 0) key = "DATE";
    if (key) Add(key, DecodeStrings(encoding, frame.data + 1, frame.size - 1));
  }

  void Finish() { Add("COMMENT", std::move(pendingComment_)); }

private:
  LStringLong pendingComment_;
};

}  // namespace

LArray<LFileTag> LId3TagReader::Read(const unsigned char* bytes, std::size_t length) {
  Reader reader;
  if (!bytes || length < kHeaderBytes || std::memcmp(bytes, "ID3", 3) != 0) return reader.tags;
  const int major = bytes[kVersionOffset];
  if (major < 2 || major > 4) return reader.tags;
  // Syncsafe sizes never have the top bit of a byte set.
  for (int i = kSizeOffset; i < kHeaderBytes; ++i) {
    if (bytes[i] & 0x80) return reader.tags;
  }
  const unsigned char flags = bytes[kFlagsOffset];
  const std::size_t end =
      std::min<std::size_t>(length, kHeaderBytes + static_cast<std::size_t>(Syncsafe(bytes + kSizeOffset)));
  const unsigned char* p = bytes + kHeaderBytes;
  std::size_t n = end - kHeaderBytes;

  // Before 2.4 unsynchronisation covers the whole tag; 2.4 marks it on each frame.
  LArray<unsigned char> resynchronised;
  if ((flags & kFlagUnsynchronised) && major < 4) {
    resynchronised = Resynchronise(p, n);
    p = resynchronised.data();
    n = resynchronised.size();
  }
  if ((flags & kFlagExtendedHeader) && major >= 3) {
    if (n < 4) return reader.tags;
    const std::size_t skip = major == 3 ? 4 + static_cast<std::size_t>(BE32(p)) : Syncsafe(p);
    if (skip > n) return reader.tags;
    p += skip;
    n -= skip;
  }

  const bool v22 = major == 2;
  const std::size_t frameHeader = v22 ? 6 : 10;
  const std::size_t idLength = v22 ? 3 : 4;
  while (n >= frameHeader && p[0] != 0) {
    Frame frame;
    std::memcpy(frame.id, p, idLength);
    std::size_t size = v22 ? BE24(p + 3) : major == 3 ? BE32(p + 4) : Syncsafe(p + 4);
    const unsigned char status = v22 ? 0 : p[9];
    p += frameHeader;
    n -= frameHeader;
    if (size > n) break;
    const unsigned char* data = p;
    std::size_t dataSize = size;
    p += size;
    n -= size;

    LArray<unsigned char> frameBytes;
    if (major == 3) {
      if (status & (kFrame23Compressed | kFrame23Encrypted)) continue;
      if (status & kFrame23Grouped) {
        if (dataSize < 1) continue;
        ++data;
        --dataSize;
      }
    } else if (major == 4) {
      if (status & (kFrame24Compressed | kFrame24Encrypted)) continue;
      std::size_t skip = ((status & kFrame24Grouped) ? 1 : 0) + ((status & kFrame24DataLength) ? 4 : 0);
      if (skip > dataSize) continue;
      data += skip;
      dataSize -= skip;
      if ((status & kFrame24Unsynchronised) || (flags & kFlagUnsynchronised)) {
        frameBytes = Resynchronise(data, dataSize);
        data = frameBytes.data();
        dataSize = frameBytes.size();
      }
    }
    frame.data = data;
    frame.size = dataSize;
    reader.FrameRead(frame, v22);
  }
  reader.Finish();
  return reader.tags;
}
