// The distortion's harmonics, and the aliases its oversampling keeps out.
#include <gtest/gtest.h>

#include <cmath>

#include "effect_test_levels.h"
#include "effect_test_sources.h"
#include "effects/distortion.h"

TEST(Distortion, EveryCurveAddsHarmonicsWhileAliasesStay60DbBelowTheToneAndTheDrySoundKeepsItsPlace) {
  constexpr std::uint32_t kRate = 44100;
  constexpr double kHz = 3700.0;  // whole cycles in a second; no alias below 20 kHz meets a harmonic
  for (int curve : {kLSPCurveSoft, kLSPCurveHard, kLSPCurveTube}) {
    for (double drive : {12.0, 48.0}) {
      LSPDistortion distortion;
      distortion.SetValue(kLSPDistortionDrive, drive);  // at most near a square wave
      distortion.SetValue(kLSPDistortionCurve, curve);
      distortion.SetValue(kLSPDistortionTone, 20000.0);
      distortion.SetValue(kLSPDistortionMix, 100.0);
      distortion.SetValue(kLSPDistortionOutput, 0.0);
      LSoundSource input = MakeBufferSource(Sine(kHz, 0.5, kRate, 2 * kRate), kRate, 1);
      LSoundSource output = distortion.OpenSource(input);
      const std::vector<float> y = ReadAll(output, 2 * kRate, 1000);
      auto db = [&](double hz) { return ToneDb(y, hz, kRate, kRate / 2, kRate); };
      const double tone = db(kHz);
      EXPECT_GT(db(3 * kHz), tone - 40.0) << curve;
      if (curve == kLSPCurveTube && drive < 20) {
        EXPECT_GT(db(2 * kHz), tone - 40.0) << "even harmonics of the bent half-waves";
      }
      for (int k = 6; k <= 120; ++k) {
        double alias = std::fmod(k * kHz, kRate);
        if (alias > kRate / 2.0) alias = kRate - alias;
        if (alias > 20000.0 || std::fmod(alias, kHz) == 0.0) continue;
        EXPECT_LT(db(alias), tone - 60.0)
            << curve << " " << drive << " dB, harmonic " << k << " folded to " << alias << " Hz";
      }
    }
  }
  // Without the distorted sound the input comes through, in step despite the filters' delay.
  LSPDistortion dry;
  dry.SetValue(kLSPDistortionMix, 0.0);
  const std::vector<float> x = Sine(kHz, 0.5, kRate, kRate / 10);
  LSoundSource input = MakeBufferSource(x, kRate, 1);
  LSoundSource output = dry.OpenSource(input);
  EXPECT_EQ(ReadAll(output, kRate / 10, 1000), x);
}
