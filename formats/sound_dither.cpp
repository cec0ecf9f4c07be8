#include "formats/sound_dither.h"

#include <limits>

namespace {

constexpr float kFullScale = 32767.0f;
constexpr float kSilenceAttenuation = 0.52f;
constexpr float kFirstErrorWeight = 0.9f;
constexpr float kSecondErrorWeight = 0.45f;
// Zero outputs after which quiet input is attenuated before the zero test.
constexpr std::int32_t kLongSilence = 4;

// Rounds half away from zero; NaN and values far beyond any 16-bit result become harmless.
std::int32_t RoundScaled(float v) {
  float s = lsf_detail::Finite(v) * kFullScale;
  if (s > 1.0e9f) s = 1.0e9f;
  if (s < -1.0e9f) s = -1.0e9f;
  return lsf_detail::RoundHalfAway(s);
}

}  // namespace

LSoundDither::LSoundDither(bool enabled) : enabled_(enabled ? 1 : 0) {
  for (auto& run : silenceRun_) run = 1;
}

template <>
void LSoundDither::ConvertSamplesOut<LSF16>(void* out, const float* in, long long frames, int channels) {
  if (!enabled_ || channels > kLDitherMaxChannels) {
    ::ConvertSamplesOut<LSF16>(out, in, frames * channels);
    return;
  }
  auto* dst = static_cast<unsigned char*>(out);
  // Channels do not affect each other: each is run on its own with its state in
  // locals, which the stores into the byte buffer cannot alias.
  for (int c = 0; c < channels; ++c) {
    float e1 = firstError_[c];
    float e2 = secondError_[c];
    std::int32_t run = silenceRun_[c];
    const float* x = in + c;
    unsigned char* o = dst + c * LSF16::kBytes;
    for (long long f = 0; f < frames; ++f, x += channels, o += channels * LSF16::kBytes) {
      std::int32_t q;
      if (run > 0) {
        q = RoundScaled(run > kLongSilence ? *x * kSilenceAttenuation : *x);
        if (q == 0) {
          lsf_detail::Store<std::int16_t>(o, 0);
          if (run < std::numeric_limits<std::int32_t>::max()) ++run;
          e2 = e1;
          e1 = *x;
          continue;
        }
      }
      q = RoundScaled(*x + kFirstErrorWeight * e1 + kSecondErrorWeight * e2);
      lsf_detail::Store<std::int16_t>(o, static_cast<std::int16_t>(q));
      if (q != 0) {
        run = 0;
      } else if (run < std::numeric_limits<std::int32_t>::max()) {
        ++run;
      }
      e2 = e1;
      e1 = *x - static_cast<float>(q) / kFullScale;
    }
    firstError_[c] = e1;
    secondError_[c] = e2;
    silenceRun_[c] = run;
  }
}
