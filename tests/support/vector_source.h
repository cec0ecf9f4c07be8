#pragma once
// VectorSource: a source over interleaved samples held in memory, keeping the
// source contract (silence outside the samples, any seek allowed). Header-only,
// as the base layer's tests have no sources to link against.
#include <cstdint>
#include <utility>
#include <vector>

#include "engine/sound_source.h"

class VectorSource final : public LSoundSourceBase {
 public:
  VectorSource(std::vector<float> samples, int channels, std::uint32_t rate = 44100,
               unsigned char errorCode = kLSourceOK)
      : LSoundSourceBase(rate, static_cast<std::uint8_t>(channels)),
        samples_(std::move(samples)),
        end_(channels > 0 ? static_cast<long long>(samples_.size()) / channels : 0) {
    SetErrorCode(errorCode);
  }

  void Read(float* buffer, long long frames) override {
    const int channels = GetChannels();
    for (long long i = 0; i < frames; ++i, ++position_) {
      const bool inside = position_ >= 0 && position_ < end_;
      for (int c = 0; c < channels; ++c)
        buffer[i * channels + c] = inside ? samples_[static_cast<std::size_t>(position_ * channels + c)] : 0.0f;
    }
  }
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { position_ = frame; }

 private:
  std::vector<float> samples_;
  long long end_;
  long long position_ = 0;
};
