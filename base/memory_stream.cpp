#include "base/memory_stream.h"

#include <algorithm>
#include <cstring>

long long LMemoryStream::Read(void* buffer, long long n) {
  if (n < 0) return -1;
  long long size = static_cast<long long>(DataSize());
  if (pos_ >= size) return 0;
  long long take = std::min(n, size - pos_);
  std::memcpy(buffer, Data() + pos_, static_cast<std::size_t>(take));
  pos_ += take;
  bytesRead_ += take;
  return take;
}

long long LMemoryStream::Write(const void* buffer, long long n) {
  if (readOnly_ || n < 0) return -1;
  if (n == 0) return 0;
  std::size_t end = static_cast<std::size_t>(pos_ + n);
  if (end > owned_.size()) owned_.resize(end, 0);
  std::memcpy(owned_.data() + pos_, buffer, static_cast<std::size_t>(n));
  pos_ += n;
  return n;
}

bool LMemoryStream::Seek(long long offset) {
  if (offset < 0) return false;
  pos_ = offset;
  return true;
}

bool LMemoryStream::Truncate(long long size) {
  if (readOnly_ || size < 0) return false;
  owned_.resize(static_cast<std::size_t>(size), 0);
  return true;
}
