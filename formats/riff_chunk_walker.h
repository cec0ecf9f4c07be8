#pragma once
// LRiffChunkWalker: steps over the top-level chunks of a RIFF/WAVE file on a
// byte stream, for the tag reader and the tag writer.
//
// Sizes are never trusted: a chunk whose body runs past the end of the stream
// is reported with the bytes that are there (available < size) and ends the
// walk. The walk goes to the end of the stream rather than to the end given by
// the RIFF size, because the sound writer's files above 4 GB carry data chunks
// beyond that size. The walker only reads; it leaves the stream's offset
// wherever its last read left it.
#include <cstdint>

#include "base/byte_stream.h"
#include "formats/wave_format.h"

struct LRiffChunk {
  std::uint32_t id = 0;
  std::uint32_t size = 0;      // as declared in the header
  std::uint32_t listType = 0;  // of a "LIST" chunk whose body has at least 4 bytes, else 0
  long long offset = 0;        // of the header
  long long available = 0;     // body bytes that lie in the stream, at most size
  // False when an odd body is not followed by its pad byte (other writers forget it).
  bool padded = true;

  [[nodiscard]] long long BodyOffset() const { return offset + kLRiffChunkHeaderBytes; }
  [[nodiscard]] bool Truncated() const { return available < static_cast<long long>(size); }
  // Just past the body and its pad byte.
  [[nodiscard]] long long End() const {
    return BodyOffset() + static_cast<long long>(size) + ((padded && (size & 1)) ? 1 : 0);
  }
};

class LRiffChunkWalker {
public:
  explicit LRiffChunkWalker(LByteStream& stream) : stream_(stream) {}

  // Finds the RIFF/WAVE container, stepping over top-level chunks of other
  // kinds before it; false when there is none.
  [[nodiscard]] bool Start();
  // The next chunk inside the container; false at the end of the walk.
  [[nodiscard]] bool Next(LRiffChunk* chunk);

  [[nodiscard]] long long RiffOffset() const { return riffOffset_; }
  [[nodiscard]] std::uint32_t RiffSize() const { return riffSize_; }
  [[nodiscard]] long long StreamSize() const { return streamSize_; }
  // Where the walk stopped: just past the last whole chunk, or at the start of
  // the chunk that ran past the end of the stream.
  [[nodiscard]] long long WalkEnd() const { return position_; }
  // True when the walk ended in a chunk that runs past the end of the stream.
  [[nodiscard]] bool EndedInTruncatedChunk() const { return truncated_; }

private:
  LByteStream& stream_;
  long long streamSize_ = 0;
  long long riffOffset_ = 0;
  std::uint32_t riffSize_ = 0;
  long long position_ = 0;
  bool done_ = false;
  bool truncated_ = false;
};

// True when the four characters of an id are printable ASCII, as every chunk
// id is; used to tell a missing pad byte from a present one.
[[nodiscard]] bool LRiffIdLooksValid(std::uint32_t id);

// Decides, for an odd body ending at bodyEnd, whether a pad byte follows: it
// does unless the byte there is not zero and a plausible chunk id starts there.
// limit is the end of the enclosing chunk or stream.
[[nodiscard]] bool LRiffPadBytePresent(LByteStream& stream, long long bodyEnd, long long limit);
