#include "formats/pcm_file_sink.h"

#include <algorithm>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "formats/little_endian.h"

namespace {

constexpr std::uint32_t kMaxSize32 = 0xFFFFFFFFu;
constexpr int kBitsPerByte = 8;
constexpr int kMaxChannels = 255;

LWaveHeaderLayout LayoutFor(LWaveHeaderKind kind, std::uint32_t sampleRate, int channels, int bytesPerSample) {
  LWaveHeaderLayout layout;
  layout.tag = kind == LWaveHeaderKind::kFloatFact ? kLWaveTagIEEEFloat : kLWaveTagPCM;
  layout.channels = static_cast<std::uint16_t>(channels);
  layout.sampleRate = sampleRate;
  layout.bitsPerSample = static_cast<std::uint16_t>(bytesPerSample * kBitsPerByte);
  layout.bytesPerSecond = static_cast<std::uint32_t>(sampleRate * static_cast<std::uint32_t>(channels) *
                                                     layout.bitsPerSample / kBitsPerByte);
  layout.blockAlign = static_cast<std::uint16_t>(bytesPerSample * channels);
  layout.fmtBytes = kind == LWaveHeaderKind::kPlain ? 16 : 18;
  layout.fact = kind == LWaveHeaderKind::kFloatFact;
  return layout;
}

}  // namespace

LSNKPCMFileBase::LSNKPCMFileBase(const char* path, std::uint32_t sampleRate, int channels, int bytesPerSample,
                                 LWaveHeaderKind kind)
    : LSoundSinkBase(sampleRate, static_cast<std::uint8_t>(channels)),
      bytesPerSample_(bytesPerSample),
      bytesPerFrame_(bytesPerSample) {
  int fd = LFileOpen(path, kLFileWrite | kLFileCreate | kLFileNonBlock, LFileLock::Shared, 0, 0666);
  if (fd >= 0) stream_ = std::make_unique<LFileStream>(fd);
  Start(kind, channels);
}

LSNKPCMFileBase::LSNKPCMFileBase(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int channels,
                                 int bytesPerSample, LWaveHeaderKind kind)
    : LSoundSinkBase(sampleRate, static_cast<std::uint8_t>(channels)),
      stream_(std::move(stream)),
      bytesPerSample_(bytesPerSample),
      bytesPerFrame_(bytesPerSample) {
  Start(kind, channels);
}

void LSNKPCMFileBase::Start(LWaveHeaderKind kind, int channels) {
  if (channels < 1 || channels > kMaxChannels) {
    channels = 1;
    SetError();
  }
  SetFormat(GetSampleRate(), static_cast<std::uint8_t>(channels));
  bytesPerFrame_ = bytesPerSample_ * channels;
  layout_ = LayoutFor(kind, GetSampleRate(), channels, bytesPerSample_);
  geometry_.headerBytes = LWaveHeaderBytes(layout_);
  // The RIFF size (first chunk plus header) must fit 32 bits; chunks end on whole 8-byte groups.
  geometry_.firstMax = std::min<long long>(kLPCMFirstChunkMax, (kMaxSize32 - (geometry_.headerBytes - 8)) & ~7LL);
  if (!stream_) {
    SetError();
    return;
  }
  WriteHeader(true);
  if (!stream_->Truncate(geometry_.headerBytes)) SetError();
}

bool LSNKPCMFileBase::Put(const void* bytes, long long n) {
  if (stream_ && stream_->WriteAll(bytes, n)) return true;
  SetError();
  return false;
}

void LSNKPCMFileBase::WriteHeader(bool provisional) {
  unsigned char header[kLWaveHeaderMaxBytes];
  const long long total = GetPosition() * bytesPerFrame_;
  std::uint32_t riff = kMaxSize32;
  // Provisional sizes lie at or above kLWaveProvisionalDataSize: readers take the length as unknown.
  auto data = static_cast<std::uint32_t>(kMaxSize32 - (geometry_.headerBytes - 8));
  std::uint32_t frames = 0;
  if (!provisional) {
    data = static_cast<std::uint32_t>(std::min(total, geometry_.firstMax));
    riff = static_cast<std::uint32_t>(data + geometry_.headerBytes - 8);
    frames = static_cast<std::uint32_t>(std::min<long long>(GetPosition(), kMaxSize32));
  }
  LWaveHeaderMake(layout_, riff, data, frames, header);
  if (!stream_->Seek(0)) SetError();
  Put(header, geometry_.headerBytes);
}

void LSNKPCMFileBase::WriteFrames(const unsigned char* bytes, long long frames) {
  if (finished_) {
    SetError();
    return;
  }
  long long n = frames * bytesPerFrame_;
  long long b = GetPosition() * bytesPerFrame_;
  while (n > 0) {
    if (geometry_.StartsChunk(b)) {
      // Sized when the file is closed.
      unsigned char header[kLRiffChunkHeaderBytes] = {};
      LPutLE32(header, kLRiffIdData);
      Put(header, sizeof header);
    }
    const long long m = std::min(n, geometry_.Room(b));
    Put(bytes, m);
    bytes += m;
    b += m;
    n -= m;
  }
  AdvancePosition(frames);
}

void LSNKPCMFileBase::Seek(long long frame) {
  if (finished_ || frame > GetPosition()) return;
  frame = std::max(frame, 0LL);
  SetPosition(frame);
  if (!stream_) return;
  const long long at = geometry_.FileOffset(frame * bytesPerFrame_);
  if (!stream_->Seek(at) || !stream_->Truncate(at)) SetError();
}

LSNKPCMFileBase::~LSNKPCMFileBase() { Complete(); }

void LSNKPCMFileBase::Complete() {
  if (finished_) return;
  finished_ = true;
  if (!stream_) return;
  WriteHeader(false);
  const long long total = GetPosition() * bytesPerFrame_;
  long long rest = total - geometry_.firstMax;
  long long at = geometry_.headerBytes + geometry_.firstMax;
  while (rest > 0) {
    const long long size = std::min<long long>(rest, kLPCMFurtherChunkMax);
    unsigned char header[kLRiffChunkHeaderBytes];
    LPutLE32(header, kLRiffIdData);
    LPutLE32(header + 4, static_cast<std::uint32_t>(size));
    if (!stream_->Seek(at) || !Put(header, sizeof header)) SetError();
    at += kLRiffChunkHeaderBytes + size;
    rest -= size;
  }
  if (total & 1) {
    const unsigned char pad = 0;
    if (!stream_->Seek(geometry_.FileOffset(total)) || !Put(&pad, 1)) SetError();
  }
}
