#pragma once
// LRiffChunkStream: the body of one chunk as a stream of its own, so that a
// codec's reader sees only the bytes the chunk holds (MP3 frames inside WAVE).
// Offsets count from the body's first byte. Read-only: Write and Truncate fail.
#include <memory>

#include "base/byte_stream.h"

class LRiffChunkStream final : public LByteStream {
 public:
  // The body starts at begin in outer and holds size bytes, or reaches to the end
  // of outer when size is negative. Bytes beyond outer's end are not there.
  LRiffChunkStream(std::unique_ptr<LByteStream> outer, long long begin, long long size);

  long long Read(void* buffer, long long n) override;
  long long Write(const void*, long long) override { return -1; }
  bool Seek(long long offset) override;
  long long Tell() override { return position_; }
  bool Truncate(long long) override { return false; }
  long long Size() override;

 private:
  std::unique_ptr<LByteStream> outer_;
  long long begin_;
  long long size_;
  long long position_ = 0;
  // Where outer stands, or -1 when that is not known.
  long long outerAt_ = -1;
};
