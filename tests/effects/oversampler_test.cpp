// The oversampler's round trip, read in runs of odd lengths.
#include "effects/oversampler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

TEST(Oversampler, RoundTripGivesTheSoundBackItsDelayLateWhateverTheRunLengths) {
  constexpr int kFrames = 3000;
  std::vector<float> in(kFrames);
  for (int i = 0; i < kFrames; ++i)
    in[i] = static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * 1000.0 * i / 44100.0));
  auto roundTrip = [&](std::vector<int> runs) {
    LOversampler oversampler;
    std::vector<float> out(kFrames), high;
    for (int at = 0, r = 0; at < kFrames; ++r) {
      const int n = std::min(runs[r % runs.size()], kFrames - at);
      high.resize(static_cast<std::size_t>(n) * kLOversampleFactor);
      oversampler.Up(&in[at], n, high.data());
      oversampler.Down(high.data(), n, &out[at]);
      at += n;
    }
    return out;
  };
  const std::vector<float> whole = roundTrip({kFrames});
  const std::vector<float> pieces = roundTrip({234, 1, 7, 64, 3});
  // The tone comes back as late as low frequencies are, a fraction of a frame that the latency rounds.
  const double delay = LOversampler().Delay();
  EXPECT_EQ(LOversampler().Latency(), std::lround(delay));
  for (int i = 0; i < kFrames; ++i) ASSERT_NEAR(pieces[i], whole[i], 1e-6) << i;
  for (int i = 200; i < kFrames; ++i)
    ASSERT_NEAR(whole[i], 0.5 * std::sin(2.0 * std::numbers::pi * 1000.0 * (i - delay) / 44100.0), 1e-3) << i;
  // Two channels side by side: each as if alone, the second here silent.
  LOversampler pair(2);
  std::vector<float> two(2 * kFrames, 0.0f), high(two.size() * kLOversampleFactor);
  for (int i = 0; i < kFrames; ++i) two[2 * i] = in[i];
  pair.Up(two.data(), kFrames, high.data());
  pair.Down(high.data(), kFrames, two.data());
  for (int i = 0; i < kFrames; ++i) {
    ASSERT_NEAR(two[2 * i], whole[i], 1e-6) << i;
    ASSERT_NEAR(two[2 * i + 1], 0.0f, 1e-6) << i;
  }
}
