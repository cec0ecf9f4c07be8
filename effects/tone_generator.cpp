#include "effects/tone_generator.h"

#include <cmath>
#include <cstring>

namespace {

// Noise depends on the frame only, so a seek or a second read gives the same sound.
float NoiseAt(long long frame, int channel) {
  std::uint64_t x = static_cast<std::uint64_t>(frame) * 0x9E3779B97F4A7C15ull + static_cast<std::uint64_t>(channel) * 0xD1B54A32D192ED03ull;
  x ^= x >> 31;
  x *= 0xBF58476D1CE4E5B9ull;
  x ^= x >> 27;
  x *= 0x94D049BB133111EBull;
  x ^= x >> 33;
  return static_cast<float>(static_cast<double>(x >> 11) / 4503599627370496.0 - 1.0);
}

}  // namespace

LSRCToneGenerator::LSRCToneGenerator(LToneKind kind, double frequencyHz, double levelDb, long long frames,
                                     std::uint32_t sampleRate, std::uint8_t channels)
    : LSoundSourceBase(sampleRate == 0 ? 44100 : sampleRate, channels == 0 ? 1 : channels),
      kind_(kind),
      frequency_(frequencyHz),
      amplitude_(std::pow(10.0, levelDb / 20.0)),
      end_(frames < 0 ? 0 : frames) {
  SetMaxAmplitude(static_cast<float>(amplitude_));
}

void LSRCToneGenerator::Read(float* buffer, long long frames) {
  const int channels = GetChannels();
  const double step = 2.0 * M_PI * frequency_ / GetSampleRate();
  for (long long i = 0; i < frames; ++i) {
    const long long f = position_ + i;
    float* out = buffer + i * channels;
    if (f < 0 || f >= end_ || kind_ == LToneKind::kSilence) {
      std::memset(out, 0, sizeof(float) * channels);
      continue;
    }
    if (kind_ == LToneKind::kSine) {
      // The phase is taken from the frame index, so long tones do not drift.
      const float v = static_cast<float>(amplitude_ * std::sin(step * static_cast<double>(f)));
      for (int c = 0; c < channels; ++c) out[c] = v;
    } else {
      for (int c = 0; c < channels; ++c) out[c] = static_cast<float>(amplitude_) * NoiseAt(f, c);
    }
  }
  position_ += frames;
}
