// Click removal and noise reduction, measured on tones and noise made here.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "effect_test_levels.h"
#include "effect_test_sources.h"
#include "effects/click_pop.h"
#include "effects/noise_reduce.h"
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

TEST(NoiseReduce, LearnedNoiseDropsByTheReductionWhileAToneAboveItKeepsItsLevel) {
  const std::size_t second = kRate;
  // Noise alone for a second, then a -12 dB tone over the same noise.
  std::vector<float> x = Noise(0.02, 3 * second, 5);
  const std::vector<float> tone = Sine(1000.0, 0.25, kRate, static_cast<long long>(2 * second));
  for (std::size_t i = 0; i < tone.size(); ++i) x[second + i] += tone[i];
  LNoiseProfile profile;
  LSoundSource tooShort = MakeBufferSource(Noise(0.02, 1000, 5), kRate, 1);
  EXPECT_FALSE(LNoiseProfileLearn(tooShort, profile));
  LSoundSource noise = MakeBufferSource(std::vector<float>(x.begin(), x.begin() + second / 2), kRate, 1);
  ASSERT_TRUE(LNoiseProfileLearn(noise, profile));
  for (double reduction : {12.0, 24.0}) {
    SCOPED_TRACE(reduction);
    LSoundSource input = MakeBufferSource(x, kRate, 1);
    LSoundSource output = LMakeSource<LSRCNoiseReduce>(input, profile, reduction);
    const std::vector<float> y = ReadAll(output, static_cast<long long>(x.size()), 1000);
    // Away from the tone's onset, which opens every band for a spectrum's length.
    EXPECT_LE(RmsDb(y, second / 2, 2 * second / 5) - RmsDb(x, second / 2, 2 * second / 5), -reduction + 0.05);
    EXPECT_NEAR(ToneDb(y, 1000.0, kRate, 3 * second / 2, second / 2), ToneDb(x, 1000.0, kRate, 3 * second / 2, second / 2), 1.0);

    // A seek lands where reading straight through does.
    output.Seek(2 * second + 77);
    const std::vector<float> after = ReadAll(output, 4000, 999);
    for (std::size_t i = 0; i < after.size(); i += 97) ASSERT_NEAR(after[i], y[2 * second + 77 + i], 1e-4);
  }
}
