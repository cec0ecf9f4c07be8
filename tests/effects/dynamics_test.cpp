// The compressor and the noise gate, measured on sines and noise made here.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "effect_test_levels.h"
#include "effect_test_sources.h"
#include "effects/compressor.h"
#include "effects/deesser.h"
#include "effects/drc_point_line.h"
#include "effects/multiband_gate.h"
#include "effects/noise_gate.h"
#include "effects/sound_process_setting_text.h"

namespace {

constexpr std::uint32_t kRate = 48000;
constexpr std::size_t kMs = kRate / 1000;

double Amplitude(double db) { return std::pow(10.0, db / 20.0); }

std::vector<float> Process(LSoundProcess& effect, const std::vector<float>& x) {
  LSoundSource input = MakeBufferSource(x, kRate, 1);
  LSoundSource out = effect.OpenSource(input);
  return ReadAll(out, static_cast<long long>(x.size()), 4096);
}

// A 1 kHz sine whose level steps through (dB, milliseconds) pieces.
std::vector<float> Steps(std::initializer_list<std::pair<double, int>> pieces) {
  std::vector<float> x;
  for (auto [db, ms] : pieces) {
    std::vector<float> s = Sine(1000.0, Amplitude(db), kRate, static_cast<long long>(ms) * kMs);
    x.insert(x.end(), s.begin(), s.end());
  }
  return x;
}

// The gain in dB applied over each millisecond (one cycle of the 1 kHz sine).
std::vector<double> GainPerMs(const std::vector<float>& x, const std::vector<float>& y) {
  std::vector<double> g;
  for (std::size_t at = 0; at + kMs <= x.size(); at += kMs) {
    float in = 0, out = 0;
    for (std::size_t i = at; i < at + kMs; ++i) in = std::max(in, std::abs(x[i])), out = std::max(out, std::abs(y[i]));
    g.push_back(20.0 * std::log10(out / in));
  }
  return g;
}

// Milliseconds from `from` until the gain first passes `level` (downwards when falling).
double MsUntil(const std::vector<double>& g, std::size_t from, double level, bool falling) {
  for (std::size_t i = from; i < g.size(); ++i)
    if (falling ? g[i] <= level : g[i] >= level) return double(i - from);
  return 1e9;
}

}  // namespace

TEST(Compressor, ASteadySineSettlesOnTheCurveInPeakAndRmsModeWithKneeAndMakeUp) {
  struct Case {
    double inDb, kneeDb, makeupDb;
    int detection;
    double outDb;
  } cases[] = {
      {-8.0, 0.0, 0.0, kLSPDRCPeak, -17.0},
      {-30.0, 0.0, 0.0, kLSPDRCPeak, -30.0},
      {-20.0, 10.0, 5.0, kLSPDRCPeak, -20.0 - 0.9375 + 5.0},  // a quarter of the knee's width squared over it
      {-8.0 + 3.0103, 0.0, 0.0, kLSPDRCRms, -14.0},           // the sine's RMS is 3 dB under its peak
  };
  for (const Case& c : cases) {
    LSPDRCSimple drc;  // -20 dB, 4:1
    drc.SetValue(kLSPDRCKnee, c.kneeDb);
    drc.SetValue(kLSPDRCMakeup, c.makeupDb);
    drc.SetValue(kLSPDRCDetection, c.detection);
    std::vector<float> y = Process(drc, Steps({{c.inDb, 1000}}));
    EXPECT_NEAR(ToneDb(y, 1000.0, kRate, y.size() - 100 * kMs, 100 * kMs), c.outDb, 0.5) << c.inDb;
  }
}

TEST(Compressor, AttackAndReleaseTakeTheirTimes) {
  LSPDRCSimple drc;
  drc.SetValue(kLSPDRCAttack, 20.0);
  drc.SetValue(kLSPDRCRelease, 200.0);
  std::vector<float> x = Steps({{-40.0, 500}, {-8.0, 500}, {-40.0, 1500}});
  std::vector<double> g = GainPerMs(x, Process(drc, x));
  EXPECT_NEAR(g[999], -9.0, 0.2);
  // Time constants: 63 % of the 9 dB change.
  EXPECT_NEAR(MsUntil(g, 500, -9.0 * 0.632, true), 20.0, 4.0);
  EXPECT_NEAR(MsUntil(g, 1000, -9.0 * 0.368, false), 200.0, 40.0);
}

TEST(Compressor, LookAheadCatchesTheFirstPeakAndKeepsTheSoundInPlace) {
  std::vector<float> x = Steps({{-60.0, 100}, {0.0, 400}});
  LSPDRCSimple limiter;
  limiter.SetValue(kLSPDRCThreshold, -6.0);
  limiter.SetValue(kLSPDRCRatio, 20.0);
  limiter.SetValue(kLSPDRCAttack, 1.0);
  std::vector<float> late = Process(limiter, x);
  EXPECT_GT(*std::max_element(late.begin(), late.end()), Amplitude(-1.0));

  limiter.SetValue(kLSPDRCLookAhead, 5.0);
  LSoundSource input = MakeBufferSource(x, kRate, 1);
  LSoundSource s = limiter.OpenSource(input);
  std::vector<float> y = ReadAll(s, static_cast<long long>(x.size()), 777);
  EXPECT_EQ(s.GetPositionSample(), static_cast<long long>(x.size()));
  EXPECT_LT(*std::max_element(y.begin(), y.end()), Amplitude(-5.0));
  // In place: a steady gain makes the output the input scaled, sample for sample.
  const std::size_t at = 300 * kMs + 12;
  for (std::size_t i = at; i < at + 40; ++i) ASSERT_NEAR(y[i], x[i] * (y[at] / x[at]), 1e-4) << i;

  s.Seek(0);
  EXPECT_EQ(ReadAll(s, static_cast<long long>(x.size()), 4096), y);
  s.Seek(200 * kMs);
  std::vector<float> tail = ReadAll(s, 100, 100);
  for (std::size_t i = 0; i < tail.size(); ++i) ASSERT_NEAR(tail[i], y[200 * kMs + i], 1e-4) << i;
}

TEST(NoiseGate, LowersNoiseBelowTheThresholdByItsRangeAndLeavesTheSoundAlone) {
  LSPNoiseGate gate;  // -40 dB, 40 dB off
  gate.SetValue(kLSPGateRange, 30.0);
  std::vector<float> x = Noise(Amplitude(-50.0), 500 * kMs);
  std::vector<float> tone = Steps({{-10.0, 500}});
  x.insert(x.end(), tone.begin(), tone.end());
  std::vector<float> tail = Noise(Amplitude(-50.0), 1500 * kMs, 7);
  x.insert(x.end(), tail.begin(), tail.end());
  std::vector<float> y = Process(gate, x);

  EXPECT_NEAR(RmsDb(y, 100 * kMs, 400 * kMs) - RmsDb(x, 100 * kMs, 400 * kMs), -30.0, 0.5);
  EXPECT_NEAR(ToneDb(y, 1000.0, kRate, 600 * kMs, 300 * kMs), -10.0, 0.05);
  EXPECT_NEAR(RmsDb(y, 2000 * kMs, 500 * kMs) - RmsDb(x, 2000 * kMs, 500 * kMs), -30.0, 0.5);
  // Held open for the hold time after the tone, then closing.
  EXPECT_NEAR(RmsDb(y, 1010 * kMs, 30 * kMs) - RmsDb(x, 1010 * kMs, 30 * kMs), 0.0, 0.5);
}

TEST(DRCPointLine, ASteadySineLandsOnTheDrawnCurveAboveBetweenAndBelowItsPoints) {
  LSPDRCPointLine drc;  // unity to -20 dB, then 2:1 up to 0 dB -> -10 dB
  drc.SetCurvePoint(-50.0, -70.0);  // and an expander below
  struct Case {
    double inDb, outDb;
  } cases[] = {{-8.0, -14.0}, {-20.0, -20.0}, {-35.0, -45.0}, {-70.0, -80.0}, {-30.0, -110.0 / 3.0}};
  for (const Case& c : cases) {
    std::vector<float> y = Process(drc, Steps({{c.inDb, 1000}}));
    EXPECT_NEAR(ToneDb(y, 1000.0, kRate, y.size() - 100 * kMs, 100 * kMs), c.outDb, 0.5) << c.inDb;
  }
}

TEST(Deesser, TurnsASibilantBurstAboveTheThresholdDownByItsReductionAndLeavesTheVoiceAlone) {
  LSPDeesser2 deesser;  // -30 dB, 10 dB
  deesser.SetValue(kLSPDeesserHz, 4000.0);
  const std::size_t frames = 600 * kMs;
  std::vector<float> voice = Sine(300.0, Amplitude(-12.0), kRate, static_cast<long long>(frames));
  for (double burstDb : {-10.0, -40.0}) {
    SCOPED_TRACE(burstDb);
    std::vector<float> x = voice;
    std::vector<float> burst = Sine(7000.0, Amplitude(burstDb), kRate, static_cast<long long>(frames));
    for (std::size_t i = 200 * kMs; i < 400 * kMs; ++i) x[i] += burst[i];
    std::vector<float> y = Process(deesser, x);
    const double expected = burstDb == -10.0 ? -10.0 : 0.0;
    EXPECT_NEAR(ToneDb(y, 7000.0, kRate, 250 * kMs, 100 * kMs) - burstDb, expected, 0.5);
    EXPECT_NEAR(ToneDb(y, 300.0, kRate, 250 * kMs, 100 * kMs), -12.0, 0.1);
    EXPECT_NEAR(ToneDb(y, 300.0, kRate, 500 * kMs, 100 * kMs), -12.0, 0.1);
  }
}

TEST(MultiBandNoiseGating, LearnedNoiseIsLoweredByTheRangeWhileAToneWellAboveItPasses) {
  LSPMultiBandNoiseGating gate;
  std::string message;
  ASSERT_EQ(LSoundProcessSetFromText(gate, "Dämpfung=30", &message), LSPSettingTextResult::kOK);
  LSoundSource noise = MakeBufferSource(Noise(Amplitude(-50.0), 1000 * kMs, 3), kRate, 1);
  LSoundSource tooShort = MakeBufferSource(Noise(Amplitude(-50.0), 10 * kMs, 3), kRate, 1);
  EXPECT_FALSE(gate.LearnNoise(tooShort));
  ASSERT_TRUE(gate.LearnNoise(noise));
  EXPECT_GT(gate.CurvePoints().size(), 10u);

  std::vector<float> x = Noise(Amplitude(-50.0), 3000 * kMs, 9);
  std::vector<float> tone = Sine(1000.0, Amplitude(-10.0), kRate, static_cast<long long>(1000 * kMs));
  for (std::size_t i = 0; i < tone.size(); ++i) x[1000 * kMs + i] += tone[i];
  std::vector<float> y = Process(gate, x);
  EXPECT_NEAR(RmsDb(y, 200 * kMs, 700 * kMs) - RmsDb(x, 200 * kMs, 700 * kMs), -30.0, 1.0);
  // Closed again once the release has run four times over.
  EXPECT_NEAR(RmsDb(y, 2600 * kMs, 350 * kMs) - RmsDb(x, 2600 * kMs, 350 * kMs), -30.0, 1.0);
  EXPECT_NEAR(ToneDb(y, 1000.0, kRate, 1200 * kMs, 600 * kMs), -10.0, 0.5);

  // A seek lands where reading straight through does.
  LSoundSource input = MakeBufferSource(x, kRate, 1);
  LSoundSource s = gate.OpenSource(input);
  s.Seek(1500 * kMs + 7);
  std::vector<float> part = ReadAll(s, 3000, 333);
  EXPECT_EQ(s.GetPositionSample(), static_cast<long long>(1500 * kMs + 7 + 3000));
  for (std::size_t i = 0; i < part.size(); ++i) ASSERT_NEAR(part[i], y[1500 * kMs + 7 + i], 1e-4) << i;
}

TEST(DRCPointLine, TheGainFollowsWithItsAttackAndTheLevelFallsWithItsRelease) {
  LSPDRCPointLine drc;  // 2:1 above -20 dB
  drc.SetValue(kLSPDRCCurveAttack, 20.0);
  drc.SetValue(kLSPDRCCurveRelease, 200.0);
  std::vector<float> x = Steps({{-40.0, 500}, {0.0, 500}, {-40.0, 1500}});
  std::vector<double> g = GainPerMs(x, Process(drc, x));
  EXPECT_NEAR(g[999], -10.0, 0.2);
  EXPECT_NEAR(MsUntil(g, 500, -10.0 * 0.632, true), 20.0, 4.0);
  // The detector falls 8.7 dB per release time; the gain is within 0.5 dB of
  // none once the level is 19 dB down, after 19 / 8.7 release times.
  EXPECT_NEAR(MsUntil(g, 1000, -0.5, false), 19.0 / 8.686 * 200.0, 0.2 * 437.0);
}
