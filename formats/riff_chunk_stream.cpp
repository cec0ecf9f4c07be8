#include "formats/riff_chunk_stream.h"

#include <algorithm>

LRiffChunkStream::LRiffChunkStream(std::unique_ptr<LByteStream> outer, long long begin, long long size)
    : outer_(std::move(outer)), begin_(std::max(0LL, begin)), size_(size) {}

long long LRiffChunkStream::Size() {
  if (!outer_) return 0;
  const long long outerSize = outer_->Size();
  if (outerSize < 0) return size_;
  const long long there = std::max(0LL, outerSize - begin_);
  return size_ < 0 ? there : std::min(size_, there);
}

bool LRiffChunkStream::Seek(long long offset) {
  if (offset < 0) return false;
  position_ = offset;
  return true;
}

long long LRiffChunkStream::Read(void* buffer, long long n) {
  if (!outer_ || n < 0) return -1;
  if (size_ >= 0) n = std::min(n, std::max(0LL, size_ - position_));
  if (n == 0) return 0;
  const long long at = begin_ + position_;
  if (outerAt_ != at && !outer_->Seek(at)) {
    outerAt_ = -1;
    return -1;
  }
  const long long got = outer_->Read(buffer, n);
  if (got < 0) {
    outerAt_ = -1;
    return -1;
  }
  position_ += got;
  outerAt_ = at + got;
  return got;
}
