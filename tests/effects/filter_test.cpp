// The filters and equalisers, measured on sines made here: levels by frequency.
#include <gtest/gtest.h>

#include <cmath>

#include "effect_test_levels.h"
#include "effect_test_sources.h"
#include "effects/eq_simple_3band.h"
#include "effects/graphic_eq.h"
#include "effects/parametric_eq.h"
#include "effects/pass_filter.h"
#include "effects/sound_process_setting_text.h"

namespace {

// The level in dB a sine of `hz` comes out with, measured after the filter settled.
double Response(LSoundProcess& effect, double hz, double rate) {
  const long long frames = static_cast<long long>(rate * 0.6);
  LSoundSource input = MakeBufferSource(Sine(hz, 0.5, static_cast<std::uint32_t>(rate), frames), rate, 1);
  LSoundSource out = effect.OpenSource(input);
  std::vector<float> y = ReadAll(out, frames, 4096);
  const std::size_t window = static_cast<std::size_t>(rate * 0.1);
  return ToneDb(y, hz, rate, y.size() - window, window) - 20.0 * std::log10(0.5);
}

}  // namespace

TEST(PassFilter, PassesTheBandIsThreeDbDownAtTheCutOffAndFallsAsSteeplyAsItsOrder) {
  for (double slope : {6.0, 12.0, 24.0, 36.0, 48.0}) {
    SCOPED_TRACE(slope);
    LSPHighPass high;
    high.SetValue(kLSPPassHz, 1000.0);
    high.SetValue(kLSPPassSlope, slope);
    EXPECT_NEAR(Response(high, 10000.0, 48000.0), 0.0, 0.5);
    EXPECT_NEAR(Response(high, 1000.0, 48000.0), -3.0, 0.5);
    EXPECT_NEAR(Response(high, 125.0, 48000.0) - Response(high, 250.0, 48000.0), -slope, 0.5);

    // Far below Nyquist, where the bilinear design bends nothing.
    LSPLowPass low;
    low.SetValue(kLSPPassHz, 1000.0);
    low.SetValue(kLSPPassSlope, slope);
    EXPECT_NEAR(Response(low, 100.0, 192000.0), 0.0, 0.5);
    EXPECT_NEAR(Response(low, 1000.0, 192000.0), -3.0, 0.5);
    EXPECT_NEAR(Response(low, 8000.0, 192000.0) - Response(low, 4000.0, 192000.0), -slope, 0.5);
  }
  LSPHighPass resonant;
  resonant.SetValue(kLSPPassHz, 1000.0);
  resonant.SetValue(kLSPPassResonance, 6.0);
  EXPECT_NEAR(Response(resonant, 1000.0, 48000.0), 3.0, 0.5);
}

TEST(ParametricEq, EachShapeShapesItsBandAndLeavesTheRest) {
  LSPParametricEqBand bell;
  bell.SetValue(kLSPBandGain, 6.0);
  EXPECT_NEAR(Response(bell, 1000.0, 48000.0), 6.0, 0.2);
  EXPECT_LT(std::abs(Response(bell, 100.0, 48000.0)), 0.5);
  EXPECT_LT(std::abs(Response(bell, 10000.0, 48000.0)), 0.5);

  LSPParametricEqBand shelf;
  shelf.SetValue(kLSPBandShape, kLSPBandLowShelf);
  shelf.SetValue(kLSPBandGain, -6.0);
  shelf.SetValue(kLSPBandQ, 0.7);
  EXPECT_NEAR(Response(shelf, 50.0, 48000.0), -6.0, 0.3);
  EXPECT_LT(std::abs(Response(shelf, 10000.0, 48000.0)), 0.3);
  shelf.SetValue(kLSPBandShape, kLSPBandHighShelf);
  EXPECT_NEAR(Response(shelf, 15000.0, 48000.0), -6.0, 0.3);
  EXPECT_LT(std::abs(Response(shelf, 100.0, 48000.0)), 0.3);

  LSPParametricEqBand notch;
  notch.SetValue(kLSPBandShape, kLSPBandNotch);
  notch.SetValue(kLSPBandQ, 5.0);
  EXPECT_LT(Response(notch, 1000.0, 48000.0), -40.0);
  EXPECT_LT(std::abs(Response(notch, 2000.0, 48000.0)), 0.5);
}

TEST(EqSimple3Band, EachKnobMovesItsOwnRange) {
  LSPEqSimple3Band eq;
  eq.SetValue(kLSP3BandLow, 6.0);
  eq.SetValue(kLSP3BandMid, -6.0);
  eq.SetValue(kLSP3BandHigh, 3.0);
  EXPECT_NEAR(Response(eq, 30.0, 48000.0), 6.0, 0.5);
  EXPECT_NEAR(Response(eq, 1000.0, 48000.0), -6.0, 0.5);
  EXPECT_NEAR(Response(eq, 16000.0, 48000.0), 3.0, 0.5);
  eq.ResetToDefault();
  EXPECT_NEAR(Response(eq, 1000.0, 48000.0), 0.0, 1e-4);
}

TEST(PassFilter, SeekThenReadGivesWhatReadingStraightThroughGives) {
  const long long frames = 30000;
  std::vector<float> x = Sine(440.0, 0.3, 44100, frames, 2);
  std::vector<float> noise = Noise(0.2, x.size());
  for (std::size_t i = 0; i < x.size(); ++i) x[i] += noise[i];
  LSPLowPass low;
  low.SetValue(kLSPPassSlope, 48.0);
  low.SetValue(kLSPPassResonance, 6.0);
  LSoundSource input = MakeBufferSource(x, 44100, 2);
  LSoundSource s = low.OpenSource(input);
  std::vector<float> whole = ReadAll(s, frames, frames);
  s.Seek(0);
  EXPECT_EQ(ReadAll(s, frames, 234), whole);
  s.Seek(17001);
  std::vector<float> tail = ReadAll(s, frames - 17001, 999);
  for (std::size_t i = 0; i < tail.size(); ++i) ASSERT_NEAR(tail[i], whole[17001 * 2 + i], 1e-5) << i;
}

TEST(GraphicEq, ABandRaisesItsCentreByItsGainAndLeavesTwoOctavesAwayAloneAtEveryBandCount) {
  for (int bands : {10, 20, 31}) {
    SCOPED_TRACE(bands);
    LSPGraphicEqBand eq;
    std::string message;
    ASSERT_EQ(LSoundProcessSetFromText(eq, "Bänder=" + std::to_string(bands), &message), LSPSettingTextResult::kOK);
    ASSERT_EQ(eq.GetNumParameters(), 1 + bands);
    ASSERT_EQ(LSoundProcessSetFromText(eq, "1000 Hz=12", &message), LSPSettingTextResult::kOK) << message;
    EXPECT_NEAR(Response(eq, 1000.0, 44100.0), 12.0, 0.5);
    EXPECT_LT(std::abs(Response(eq, 250.0, 44100.0)), 0.5);
    EXPECT_LT(std::abs(Response(eq, 4000.0, 44100.0)), 0.5);
  }
  std::string message;
  LSPGraphicEqBand named;
  EXPECT_EQ(LSoundProcessSetFromText(named, "31.5 Hz=3", &message), LSPSettingTextResult::kOK) << message;
  EXPECT_EQ(named.Value(kLSPGraphicFirstGain), 3.0);
  // Every band raised alike lifts everything about alike.
  LSPGraphicEqBand all;
  for (int i = 0; i < 10; ++i) all.SetValue(kLSPGraphicFirstGain + i, 6.0);
  for (double hz : {125.0, 700.0, 1000.0, 3000.0}) EXPECT_NEAR(Response(all, hz, 44100.0), 6.0, 1.5) << hz;
}
