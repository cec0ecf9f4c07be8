#pragma once
// LAiffChunkWalker: steps over the chunks of an AIFF or AIFF-C file on a byte
// stream. Every odd body is followed by its pad byte. Sizes are not trusted: the
// walk ends where no whole chunk header is left in the stream, and a body that
// runs past the end is the caller's to cut short.
#include <cstdint>

#include "base/byte_stream.h"

struct LAiffChunk {
  std::uint32_t id = 0;
  std::uint32_t size = 0;  // as declared in the header
  long long offset = 0;    // of the header
  [[nodiscard]] long long BodyOffset() const;
};

class LAiffChunkWalker {
public:
  explicit LAiffChunkWalker(LByteStream& stream) : stream_(stream) {}

  // Reads the FORM header; false when the stream does not open an AIFF or
  // AIFF-C file. aifc, when given, tells which of the two it is.
  [[nodiscard]] bool Start(bool* aifc = nullptr);
  // The next chunk, with the stream standing at its body; false at the end.
  [[nodiscard]] bool Next(LAiffChunk* chunk);

private:
  LByteStream& stream_;
  long long streamSize_ = -1;
  long long position_ = 0;
};
