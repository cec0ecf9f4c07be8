// Automatic gain: a tone that steps up by 12 dB after a pause ends near the
// target loudness on both sides of the step.
#include <gtest/gtest.h>

#include <cmath>

#include "app/ef_auto_gain_control.h"
#include "edit_fixture.h"
#include "effects/loudness_meter.h"

namespace {

using EfAutoGainControlTest = EditTest;

constexpr long long kRate = 44100;

double LoudnessOf(const std::vector<float>& mono, long long fromSeconds, long long toSeconds) {
  LCutListAudio part = DocListOf(Frames(mono, 1, fromSeconds * kRate, toSeconds * kRate), 1);
  LSoundSource source = part.OpenSource();
  LProcessInterfaceQuiet process;
  LLoudness loudness;
  EXPECT_EQ(LLoudnessMeasure(process, source, loudness), kLProcessSuccess);
  return loudness.integratedLufs;
}

TEST_F(EfAutoGainControlTest, ATwelveDecibelStepEndsNearTheTargetOnBothSides) {
  // 2 s of silence, 10 s of a tone at -30 LUFS, then 10 s 12 dB louder.
  std::vector<float> mono(22 * kRate, 0.0f);
  const std::vector<float> tone = Tones({{1000, 1.0}}, 20 * kRate, kRate);
  const double soft = std::pow(10.0, -30.0 / 20) * std::sqrt(2.0), loud = soft * std::pow(10.0, 12.0 / 20);
  for (long long i = 0; i < 20 * kRate; ++i) mono[2 * kRate + i] = static_cast<float>(tone[i] * (i < 10 * kRate ? soft : loud));
  EXPECT_NEAR(LoudnessOf(mono, 3, 11), -30.0, 0.2);

  LCutListAudio list = DocListOf(mono, 1);
  Apply<SVEfAutoGainControl>(list, {0, 22 * kRate, 0, 0, 0}, "Auto-Verstärkungsregelung aktiv",
                             SVAutoGainSettings{-20.0, 15.0, 1.0});
  const std::vector<float> out = DocReadAll(list);
  EXPECT_NEAR(LoudnessOf(out, 3, 8), -20.0, 0.5);  // the pause before did not swell the gain
  EXPECT_NEAR(LoudnessOf(out, 16, 21), -20.0, 0.5);
}

}  // namespace
