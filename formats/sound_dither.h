#pragma once
// LSoundDither: noise-shaped requantisation for the integer WAVE writers.
//
// For 16 bits the rounding error of each sample is fed back into the next two
// (weights 0.9 and 0.45), which moves the requantisation noise up in frequency.
// A channel whose outputs have been zero stays digitally silent: quiet input is
// tested against zero first (attenuated once the silence has lasted more than
// four samples), so files that start or end in silence keep exact zeros. Other
// formats, a disabled state and more than kLDitherMaxChannels channels get the
// plain conversion.
#include <cstdint>

#include "engine/sample_format.h"

constexpr int kLDitherMaxChannels = 16;

class LSoundDither {
 public:
  explicit LSoundDither(bool enabled = false);

  bool IsEnabled() const { return enabled_ != 0; }

  // Converts frames x channels interleaved floats; the state carries over from call to call.
  template <class Tag>
  void ConvertSamplesOut(void* out, const float* in, long long frames, int channels) {
    ::ConvertSamplesOut<Tag>(out, in, frames * channels);
  }

 private:
  std::uint8_t enabled_;
  float firstError_[kLDitherMaxChannels] = {};
  float secondError_[kLDitherMaxChannels] = {};
  std::int32_t silenceRun_[kLDitherMaxChannels];
};

// Input must lie within full scale: the shaped value is stored without clamping.
template <>
void LSoundDither::ConvertSamplesOut<LSF16>(void* out, const float* in, long long frames, int channels);
