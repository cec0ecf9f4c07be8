#pragma once
// LByteStream: the narrow byte interface that every file reader and writer sits
// on, so that file formats round-trip in memory in tests and fuzzers.
//
// Contract: Read and Write move at most n bytes at the current offset and answer
// how many moved (a short count at the end of the data; -1 on an error). Seek is
// absolute; seeking past the end is allowed and a later Write fills the gap with
// zeros. Tell answers -1 when the stream cannot tell. One thread at a time.

class LByteStream {
public:
  virtual ~LByteStream() = default;

  [[nodiscard]] virtual long long Read(void* buffer, long long n) = 0;
  [[nodiscard]] virtual long long Write(const void* buffer, long long n) = 0;
  [[nodiscard]] virtual bool Seek(long long offset) = 0;
  [[nodiscard]] virtual long long Tell() = 0;
  [[nodiscard]] virtual bool Truncate(long long size) = 0;
  // Current size of the data, -1 when unknown.
  [[nodiscard]] virtual long long Size() = 0;

  // Reads exactly n bytes or answers false.
  [[nodiscard]] bool ReadAll(void* buffer, long long n) { return Read(buffer, n) == n; }
  [[nodiscard]] bool WriteAll(const void* buffer, long long n) { return Write(buffer, n) == n; }
  [[nodiscard]] bool SeekRelative(long long delta) {
    long long at = Tell();
    return at >= 0 && at + delta >= 0 && Seek(at + delta);
  }
};
