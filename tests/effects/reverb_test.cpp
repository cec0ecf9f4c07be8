// The reverberation of a click: how long it rings, how the two sides differ,
// and that it rings on past the sound's end.
#include <gtest/gtest.h>

#include <cmath>

#include "effect_test_sources.h"
#include "effects/reverb.h"

TEST(Reverb, AClickDiesAwayBy60DbInTheSetTimeDecorrelatedPastTheEndOfTheSoundAndDampedInItsHighs) {
  constexpr std::uint32_t kRate = 44100;
  constexpr long long kInput = kRate / 2;
  double brightness[2] = {};  // of the late tail, without and with damping
  for (double seconds : {0.8, 2.5}) {
    LSPReverb3 reverb;
    reverb.SetValue(kLSPReverbTime, seconds);
    reverb.SetValue(kLSPReverbDamping, seconds > 1 ? 80.0 : 0.0);
    reverb.SetValue(kLSPReverbPreDelay, 0.0);
    reverb.SetValue(kLSPReverbMix, 100.0);
    std::vector<float> click(2 * kInput);
    click[0] = click[1] = 1.0f;
    LSoundSource input = MakeBufferSource(click, kRate, 2);
    LSoundSource output = reverb.OpenSource(input);
    ASSERT_EQ(output.GetEndSample(), kInput + static_cast<long long>(std::ceil(seconds * kRate)));
    const long long frames = kInput + static_cast<long long>(2 * seconds * kRate);
    const std::vector<float> y = ReadAll(output, frames, 4096);

    // Schroeder's backward integral; its fall from -5 to -35 dB, doubled, is the time to -60 dB.
    std::vector<double> left(frames + 1, 0.0);
    for (long long i = frames - 1; i >= 0; --i)
      left[i] = left[i + 1] + double(y[2 * i]) * y[2 * i] + double(y[2 * i + 1]) * y[2 * i + 1];
    auto when = [&](double db) {
      long long i = 0;
      while (i < frames && 10.0 * std::log10(left[i] / left[0]) > db) ++i;
      return static_cast<double>(i) / kRate;
    };
    EXPECT_NEAR(2.0 * (when(-35.0) - when(-5.0)) / seconds, 1.0, 0.2) << seconds;

    double lr = 0, ll = 0, rr = 0;
    for (long long i = kRate / 20; i < kInput; ++i) {
      lr += double(y[2 * i]) * y[2 * i + 1];
      ll += double(y[2 * i]) * y[2 * i];
      rr += double(y[2 * i + 1]) * y[2 * i + 1];
    }
    EXPECT_LT(std::abs(lr) / std::sqrt(ll * rr), 0.5) << seconds;
    // The tail past the input's end still carries what the decay leaves there.
    const double tail = left[kInput + kRate / 10] / left[0];
    EXPECT_GT(tail, std::pow(10.0, -6.0 * (kInput + kRate / 10.0) / kRate / seconds * 1.3)) << seconds;

    // The share of the highs in the tail, from the energy of the steps between frames.
    double steps = 0, all = 0;
    for (long long i = kRate / 4; i < kRate / 2; ++i) {
      steps += std::pow(double(y[2 * i]) - y[2 * i - 2], 2);
      all += double(y[2 * i]) * y[2 * i];
    }
    brightness[seconds > 1] = steps / all;
  }
  EXPECT_LT(brightness[1], brightness[0] / 3.0) << "the damped highs die sooner";
}
