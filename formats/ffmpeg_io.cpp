#include "formats/ffmpeg_io.h"

#ifdef SONVALE_HAVE_FFMPEG

#include <cstdint>
#include <cstdio>

#include "formats/ffmpeg_api.h"

namespace {

// Bytes that FFmpeg buffers between it and the stream.
constexpr int kBufferBytes = 64 * 1024;

int ReadPacket(void* opaque, std::uint8_t* buffer, int size) {
  long long n = static_cast<LByteStream*>(opaque)->Read(buffer, size);
  if (n < 0) return AVERROR(EIO);
  if (n == 0) return AVERROR_EOF;
  return static_cast<int>(n);
}

// The write callback took a non-const buffer before FFmpeg 6.1.
#if defined(FF_API_AVIO_WRITE_NONCONST) && !FF_API_AVIO_WRITE_NONCONST
int WritePacket(void* opaque, const std::uint8_t* buffer, int size) {
#else
int WritePacket(void* opaque, std::uint8_t* buffer, int size) {
#endif
  return static_cast<LByteStream*>(opaque)->WriteAll(buffer, size) ? size : AVERROR(EIO);
}

std::int64_t SeekStream(void* opaque, std::int64_t offset, int whence) {
  auto* stream = static_cast<LByteStream*>(opaque);
  if (whence & AVSEEK_SIZE) return stream->Size();
  whence &= ~AVSEEK_FORCE;
  long long base = 0;
  if (whence == SEEK_CUR) {
    base = stream->Tell();
  } else if (whence == SEEK_END) {
    base = stream->Size();
  } else if (whence != SEEK_SET) {
    return AVERROR(EINVAL);
  }
  if (base < 0 || base + offset < 0 || !stream->Seek(base + offset)) return AVERROR(EIO);
  return base + offset;
}

}  // namespace

LFFmpegIO::LFFmpegIO(LByteStream* stream, bool write) {
  if (!stream || !LFFmpegApi::Load()) return;
  auto* buffer = static_cast<unsigned char*>(Av().av_malloc(kBufferBytes));
  if (!buffer) return;
  context_ = Av().avio_alloc_context(buffer, kBufferBytes, write ? 1 : 0, stream, write ? nullptr : &ReadPacket,
                                     write ? &WritePacket : nullptr, &SeekStream);
  if (!context_) Av().av_free(buffer);
}

LFFmpegIO::~LFFmpegIO() {
  if (!context_) return;
  if (context_->write_flag) Av().avio_flush(context_);
  Av().av_freep(&context_->buffer);
  Av().avio_context_free(&context_);
}

#else

LFFmpegIO::LFFmpegIO(LByteStream*, bool) {}
LFFmpegIO::~LFFmpegIO() = default;

#endif
