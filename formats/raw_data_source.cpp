#include "formats/raw_data_source.h"

#include <algorithm>

namespace {
// What a source without a usable rate falls back to.
constexpr std::uint32_t kFallbackRate = 44100;
constexpr int kMaxChannels = 255;
}  // namespace

LRawFileDataSoundSourceBase::LRawFileDataSoundSourceBase(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate,
                                                         int channels, float maxAmplitude, int bytesPerSample,
                                                         long long dataSize)
    : LSoundSourceBase(sampleRate, static_cast<std::uint8_t>(channels)), stream_(std::move(stream)) {
  SetMaxAmplitude(maxAmplitude);
  if (sampleRate < 1) {
    sampleRate = kFallbackRate;
    SetErrorCode(kLSourceDamaged);
  }
  if (channels < 1 || channels > kMaxChannels) {
    channels = 1;
    SetErrorCode(kLSourceDamaged);
  }
  SetFormat(sampleRate, static_cast<std::uint8_t>(channels));
  bytesPerFrame_ = std::max(1, channels * bytesPerSample);
  if (!stream_ || (dataStart_ = stream_->Tell()) < 0) {
    SetErrorCode(kLSourceCannotOpen);
    stream_.reset();
    dataStart_ = 0;
    return;
  }
  dataSize_ = std::max(0LL, dataSize);
}

void LRawFileDataSoundSourceBase::ReadConverted(float* out, long long frames, unsigned char* buffer,
                                                ConvertIn convert) {
  const int channels = GetChannels();
  LReadInSteps(out, frames, channels, position_, [&](float* to, long long at, long long n) -> long long {
    if (!stream_ || at >= GetEndSample()) return 0;
    n = std::min(n, GetEndSample() - at);
    const long long fileAt = dataStart_ + at * bytesPerFrame_;
    if (streamAt_ != fileAt && !stream_->Seek(fileAt)) {
      streamAt_ = -1;
      return 0;
    }
    long long r = stream_->Read(buffer, n * bytesPerFrame_);
    if (r <= 0) {
      streamAt_ = -1;
      return 0;
    }
    streamAt_ = fileAt + r;
    const long long got = r / bytesPerFrame_;
    convert(to, buffer, got * channels);
    return got;
  });
}
