#pragma once
// LFileStream: an LByteStream over a POSIX file descriptor. The stream owns the
// descriptor and closes it when destroyed (an advisory lock goes with it).
#include "base/byte_stream.h"

class LFileStream final : public LByteStream {
public:
  explicit LFileStream(int fd) : fd_(fd) {}
  ~LFileStream() override;
  LFileStream(const LFileStream&) = delete;
  LFileStream& operator=(const LFileStream&) = delete;

  long long Read(void* buffer, long long n) override;
  long long Write(const void* buffer, long long n) override;
  bool Seek(long long offset) override;
  long long Tell() override;
  bool Truncate(long long size) override;
  long long Size() override;

  int Descriptor() const { return fd_; }
  bool IsOpen() const { return fd_ >= 0; }

private:
  int fd_;
};
