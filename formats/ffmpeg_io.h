#pragma once
// LFFmpegIO: an FFmpeg I/O context over an LByteStream, so that FFmpeg reads and
// writes through the same narrow interface as our own readers and writers (in
// memory under tests and fuzzers, through the platform layer on disk). The
// stream must outlive the context. Without FFmpeg it makes no context.
#include "base/byte_stream.h"

struct AVIOContext;

class LFFmpegIO {
public:
  LFFmpegIO(LByteStream* stream, bool write);
  ~LFFmpegIO();
  LFFmpegIO(const LFFmpegIO&) = delete;
  LFFmpegIO& operator=(const LFFmpegIO&) = delete;

  // Null when the context could not be made.
  AVIOContext* Context() const { return context_; }

private:
  AVIOContext* context_ = nullptr;
};
