#pragma once
// LRiffChunkWalker: steps over the top-level chunks of a RIFF/WAVE file on a
// byte stream, for the sound reader, the tag reader and the tag writer.
//
// Sizes are never trusted: a chunk whose body runs past the end of the stream
// is reported with the bytes that are there (available < size) and ends the
// walk. The tag reader and writer walk tolerantly: an odd body may lack its pad
// byte, which is guessed from the bytes that follow. The sound reader walks
// strictly: every odd body has its pad byte, as RIFF says, so that its reading
// of a file never depends on a guess. The walk goes to the end of the stream rather than to the end given by
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

enum class LRiffPadRule : std::uint8_t {
  kGuess,   // an odd body's pad byte is there unless a chunk id starts where it would be
  kAlways,  // an odd body is always followed by a pad byte
};

class LRiffChunkWalker {
public:
  explicit LRiffChunkWalker(LByteStream& stream, LRiffPadRule padRule = LRiffPadRule::kGuess)
      : stream_(stream), padRule_(padRule) {}

  // Finds the RIFF/WAVE container, stepping over top-level chunks of other
  // kinds before it; false when there is none. A sniff steps only over a few
  // chunks whose ids look like ids, so that other formats are turned away at once.
  [[nodiscard]] bool Start(bool sniff = false);
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
  LRiffPadRule padRule_;
  long long streamSize_ = 0;
  long long riffOffset_ = 0;
  std::uint32_t riffSize_ = 0;
  long long position_ = 0;
  bool done_ = false;
  bool truncated_ = false;
};

// Reads the chunk header at offset; false when the stream holds no whole header
// there. available and padded are left as for a chunk that lies whole in the stream.
[[nodiscard]] bool LRiffChunkHeaderRead(LByteStream& stream, long long offset, LRiffChunk* chunk);

// True when the four characters of an id are printable ASCII, as every chunk
// id is; used to tell a missing pad byte from a present one.
[[nodiscard]] bool LRiffIdLooksValid(std::uint32_t id);

// Decides, for an odd body ending at bodyEnd, whether a pad byte follows: it
// does unless the byte there is not zero and a plausible chunk id starts there.
// limit is the end of the enclosing chunk or stream.
[[nodiscard]] bool LRiffPadBytePresent(LByteStream& stream, long long bodyEnd, long long limit);
