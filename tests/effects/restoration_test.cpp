// Click removal and noise reduction, measured on tones and noise made here.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "effect_test_levels.h"
#include "effect_test_sources.h"
#include "effects/click_pop.h"
#include "effects/sound_process_setting_text.h"

namespace {

constexpr std::uint32_t kRate = 44100;

}  // namespace

TEST(ClickPopRemoval, TwentyClicksInATwoToneSoundAreRepairedAndNothingElseIsTouched) {
  constexpr long long kFrames = 2 * kRate;
  std::vector<float> clean = Sine(440.0, 0.3, kRate, kFrames, 2);
  const std::vector<float> second = Sine(1234.0, 0.15, kRate, kFrames, 2);
  for (std::size_t i = 0; i < clean.size(); ++i) clean[i] += second[i];
  std::vector<float> clicked = clean;
  std::vector<char> damaged(clean.size(), 0);
  std::mt19937 random(7);
  for (int k = 0; k < 20; ++k) {
    // One click straddles the edge of a processing block (8192 frames).
    const long long at = k == 0 ? 8190 : 3000 + k * 4300;
    const long long length = 1 + k;  // up to 20 samples, under 0.5 ms
    const int channel = k % 2;
    for (long long i = at; i < at + length; ++i) {
      const float size = 0.3f + 0.3f * static_cast<float>(random() % 1000) / 1000.0f;
      clicked[i * 2 + channel] += random() % 2 ? size : -size;
      damaged[i * 2 + channel] = 1;
    }
  }
  LSPClickPopRemoval effect;
  LSoundSource input = MakeBufferSource(clicked, kRate, 2);
  LSoundSource output = effect.OpenSource(input);
  const std::vector<float> out = ReadAll(output, kFrames, 1000);
  double error = 0, energy = 0, worst = 0;
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (!damaged[i]) {
      ASSERT_EQ(out[i], clicked[i]) << "sample " << i;
    }
    error += (out[i] - clean[i]) * (out[i] - clean[i]);
    energy += clean[i] * clean[i];
    worst = std::max(worst, std::fabs(static_cast<double>(out[i] - clean[i])));
  }
  EXPECT_LT(10.0 * std::log10(error / energy), -60.0);
  // Every click was found: none is left at its size.
  EXPECT_LT(worst, 0.05);
}
