#pragma once
// LMemoryStream: an LByteStream over a growable byte array that it owns, or over
// a read-only view of bytes owned by the caller (which then must outlive it).
#include <cstddef>
#include <vector>

#include "base/byte_stream.h"

class LMemoryStream final : public LByteStream {
public:
  LMemoryStream() = default;
  explicit LMemoryStream(std::vector<unsigned char> bytes) : owned_(std::move(bytes)) {}
  // A read-only view: writes and truncation fail.
  LMemoryStream(const void* data, std::size_t size)
      : view_(static_cast<const unsigned char*>(data)), viewSize_(size), readOnly_(true) {}

  long long Read(void* buffer, long long n) override;
  long long Write(const void* buffer, long long n) override;
  bool Seek(long long offset) override;
  long long Tell() override { return pos_; }
  bool Truncate(long long size) override;
  long long Size() override { return static_cast<long long>(DataSize()); }

  const std::vector<unsigned char>& Bytes() const { return owned_; }
  std::vector<unsigned char>& Bytes() { return owned_; }

  // Bytes handed to Read so far; tests use it to prove that data was skipped.
  long long BytesRead() const { return bytesRead_; }

private:
  const unsigned char* Data() const { return readOnly_ ? view_ : owned_.data(); }
  std::size_t DataSize() const { return readOnly_ ? viewSize_ : owned_.size(); }

  std::vector<unsigned char> owned_;
  const unsigned char* view_ = nullptr;
  std::size_t viewSize_ = 0;
  bool readOnly_ = false;
  long long pos_ = 0;
  long long bytesRead_ = 0;
};
