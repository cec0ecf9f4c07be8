#include "formats/sound_dither.h"

#include <cmath>
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
  // Half away from zero without a branch on the sign, which noise makes unpredictable.
  return static_cast<std::int32_t>(s + std::copysign(0.5f, s));
}

// One requantisation step of a channel; answers the 16-bit value.
inline std::int16_t ShapeOne(float x, float& e1, float& e2, std::int32_t& run) {
  std::int32_t q;
  if (run > 0) {
    q = RoundScaled(run > kLongSilence ? x * kSilenceAttenuation : x);
    if (q == 0) {
      if (run < std::numeric_limits<std::int32_t>::max()) ++run;
      e2 = e1;
      e1 = x;
      return 0;
    }
  }
  q = RoundScaled(x + kFirstErrorWeight * e1 + kSecondErrorWeight * e2);
  if (q != 0) {
    run = 0;
  } else if (run < std::numeric_limits<std::int32_t>::max()) {
    ++run;
  }
  e2 = e1;
  e1 = x - static_cast<float>(q) / kFullScale;
  return static_cast<std::int16_t>(q);
}

// Each sample waits for the error of the one before, a chain of a conversion,
// a division and more; Channels chains side by side keep the core busy. The
// state lives in locals, which the stores into the byte buffer cannot alias.
template <int Channels>
void ShapeInterleaved(unsigned char* out, const float* in, long long frames, float* first, float* second,
                      std::int32_t* runs) {
  float e1[Channels], e2[Channels];
  std::int32_t run[Channels];
  for (int c = 0; c < Channels; ++c) {
    e1[c] = first[c];
    e2[c] = second[c];
    run[c] = runs[c];
  }
  for (long long f = 0; f < frames; ++f, in += Channels, out += Channels * LSF16::kBytes) {
    for (int c = 0; c < Channels; ++c) {
      lsf_detail::Store<std::int16_t>(out + c * LSF16::kBytes, ShapeOne(in[c], e1[c], e2[c], run[c]));
    }
  }
  for (int c = 0; c < Channels; ++c) {
    first[c] = e1[c];
    second[c] = e2[c];
    runs[c] = run[c];
  }
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
  switch (channels) {
    case 1:
      ShapeInterleaved<1>(dst, in, frames, firstError_, secondError_, silenceRun_);
      return;
    case 2:
      ShapeInterleaved<2>(dst, in, frames, firstError_, secondError_, silenceRun_);
      return;
    default:
      break;
  }
  // Channels do not affect each other: each is run on its own.
  for (int c = 0; c < channels; ++c) {
    float e1 = firstError_[c];
    float e2 = secondError_[c];
    std::int32_t run = silenceRun_[c];
    const float* x = in + c;
    unsigned char* o = dst + c * LSF16::kBytes;
    for (long long f = 0; f < frames; ++f, x += channels, o += channels * LSF16::kBytes) {
      lsf_detail::Store<std::int16_t>(o, ShapeOne(*x, e1, e2, run));
    }
    firstError_[c] = e1;
    secondError_[c] = e2;
    silenceRun_[c] = run;
  }
}
