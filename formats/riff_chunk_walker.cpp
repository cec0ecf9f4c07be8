#include "formats/riff_chunk_walker.h"

#include <algorithm>
#include <limits>

#include "formats/little_endian.h"
#include "formats/riff_tag_chunk.h"

namespace {

constexpr int kIdBytes = 4;
constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kLastPrintable = 0x7E;
// Leading chunks that a sniff steps over before it gives up.
constexpr int kSniffChunks = 16;

}  // namespace

bool LRiffIdLooksValid(std::uint32_t id) {
  for (int i = 0; i < kIdBytes; ++i) {
    const auto c = static_cast<unsigned char>(id >> (8 * i));
    if (c < kFirstPrintable || c > kLastPrintable) return false;
  }
  return true;
}

bool LRiffPadBytePresent(LByteStream& stream, long long bodyEnd, long long limit) {
  if (bodyEnd >= limit) return false;
  unsigned char bytes[kIdBytes + 1] = {};
  if (!stream.Seek(bodyEnd)) return false;
  const long long got = stream.Read(bytes, sizeof bytes);
  if (got < 1) return false;
  if (bytes[0] == 0) return true;
  // Not zero: a pad byte only if the unpadded reading does not start a chunk id.
  return !(got >= kIdBytes && LRiffIdLooksValid(LGetLE32(bytes)));
}

bool LRiffChunkHeaderRead(LByteStream& stream, long long offset, LRiffChunk* chunk) {
  unsigned char head[kLRiffChunkHeaderBytes];
  if (!stream.Seek(offset) || !stream.ReadAll(head, sizeof head)) return false;
  *chunk = LRiffChunk();
  chunk->id = LGetLE32(head);
  chunk->size = LGetLE32(head + 4);
  chunk->offset = offset;
  chunk->available = chunk->size;
  return true;
}

bool LRiffChunkWalker::Start(bool sniff) {
  streamSize_ = stream_.Size();
  if (streamSize_ < 0) streamSize_ = std::numeric_limits<long long>::max();
  long long at = 0;
  unsigned char head[kLRiffListHeaderBytes];
  for (int chunks = 0;; ++chunks) {
    if (!stream_.Seek(at) || !stream_.ReadAll(head, sizeof head)) return false;
    if (LGetLE32(head) == kLRiffIdRiff && LGetLE32(head + 8) == kLRiffIdWave) break;
    if (sniff && (chunks >= kSniffChunks || !LRiffIdLooksValid(LGetLE32(head)))) return false;
    // Leading chunks of other kinds are stepped over as the sound reader does.
    const std::uint64_t rounded = LRiffPadded(LGetLE32(head + 4));
    if (rounded < 5) return false;
    at += kLRiffChunkHeaderBytes + static_cast<long long>(rounded);
    if (at >= streamSize_) return false;
  }
  riffOffset_ = at;
  riffSize_ = LGetLE32(head + 4);
  position_ = at + kLRiffListHeaderBytes;
  done_ = false;
  truncated_ = false;
  return true;
}

bool LRiffChunkWalker::Next(LRiffChunk* chunk) {
  if (done_ || position_ > streamSize_ - kLRiffChunkHeaderBytes) {
    done_ = true;
    return false;
  }
  unsigned char head[kLRiffListHeaderBytes] = {};
  if (!stream_.Seek(position_)) {
    done_ = true;
    return false;
  }
  const long long got = stream_.Read(head, sizeof head);
  if (got < kLRiffChunkHeaderBytes) {
    done_ = true;
    return false;
  }
  LRiffChunk c;
  c.id = LGetLE32(head);
  c.size = LGetLE32(head + 4);
  c.offset = position_;
  const long long bodyRoom = streamSize_ - c.BodyOffset();
  c.available = std::min<long long>(c.size, bodyRoom);
  if (c.id == kLRiffIdList && c.available >= 4 && got >= kLRiffListHeaderBytes) c.listType = LGetLE32(head + 8);
  if (c.Truncated()) {
    truncated_ = true;
    done_ = true;
  } else if ((c.size & 1) && padRule_ == LRiffPadRule::kGuess) {
    const long long bodyEnd = c.BodyOffset() + c.size;
    c.padded = LRiffPadBytePresent(stream_, bodyEnd, streamSize_);
  }
  if (!done_) position_ = c.End();
  *chunk = c;
  return true;
}
