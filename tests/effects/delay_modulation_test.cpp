// The modulation effects: what their slow oscillators do to a sine or a click.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "effect_test_levels.h"
#include "effect_test_sources.h"
#include "effects/chorus.h"
#include "effects/flanger.h"
#include "effects/tremolo.h"
#include "effects/vibrato.h"

namespace {

std::vector<float> Apply(LSoundProcess& effect, std::vector<float> x, std::uint32_t rate, int channels = 1) {
  const long long frames = static_cast<long long>(x.size()) / channels;
  LSoundSource input = MakeBufferSource(std::move(x), rate, channels);
  LSoundSource output = effect.OpenSource(input);
  return ReadAll(output, frames, 1000);
}

// Levels in dB of consecutive windows of `window` frames.
std::vector<double> WindowDb(const std::vector<float>& s, std::size_t window) {
  std::vector<double> db;
  for (std::size_t at = 0; at + window <= s.size(); at += window) db.push_back(RmsDb(s, at, window));
  return db;
}

}  // namespace

TEST(Tremolo, AFullDepthSineAtFiveHertzSwingsTheEnvelopeFromSilenceToFullAtFiveHertz) {
  constexpr std::uint32_t kRate = 44100;
  LSPTremolo tremolo;
  tremolo.SetValue(kLSPTremoloRate, 5.0);
  tremolo.SetValue(kLSPTremoloDepth, 100.0);
  const std::vector<float> y = Apply(tremolo, Sine(1000.0, 0.5, kRate, 2 * kRate), kRate);
  // The envelope in 10 ms windows (ten cycles of the tone each), sampled at 100 Hz.
  std::vector<float> envelope;
  for (std::size_t at = 0; at + 441 <= y.size(); at += 441)
    envelope.push_back(static_cast<float>(std::pow(10.0, RmsDb(y, at, 441) / 20.0)));
  double mean = 0;
  for (float e : envelope) mean += e / envelope.size();
  const double fiveHz = std::pow(10.0, ToneDb(envelope, 5.0, 100.0, 0, envelope.size()) / 20.0);
  EXPECT_NEAR(fiveHz / mean, 1.0, 0.1) << "a full swing of the level at the set rate";
  EXPECT_LT(ToneDb(envelope, 3.0, 100.0, 0, envelope.size()), 20.0 * std::log10(fiveHz) - 30.0);
  const auto [low, high] = std::minmax_element(envelope.begin(), envelope.end());
  EXPECT_LT(*low, 0.05 * *high);
  EXPECT_NEAR(*high, 0.5 / std::sqrt(2.0), 0.02);
}

TEST(Vibrato, TheToneSwingsByTheSetCentsAndWithoutDepthTheSoundKeepsItsPlace) {
  constexpr std::uint32_t kRate = 44100;
  LSPVibrato vibrato;
  vibrato.SetValue(kLSPVibratoRate, 5.0);
  vibrato.SetValue(kLSPVibratoDepth, 50.0);
  const std::vector<float> y = Apply(vibrato, Sine(1000.0, 0.5, kRate, 2 * kRate), kRate);
  // Instantaneous frequency from the spacing of rising zero crossings.
  double last = -1, highest = 0, lowest = 1e9;
  for (std::size_t i = kRate / 5; i + 1 < y.size(); ++i) {
    if (y[i] < 0 && y[i + 1] >= 0) {
      const double at = i + y[i] / (y[i] - y[i + 1]);
      if (last >= 0) {
        const double hz = kRate / (at - last);
        highest = std::max(highest, hz);
        lowest = std::min(lowest, hz);
      }
      last = at;
    }
  }
  EXPECT_NEAR(1200.0 * std::log2(highest / 1000.0), 50.0, 3.0);
  EXPECT_NEAR(1200.0 * std::log2(lowest / 1000.0), -50.0, 4.0);

  vibrato.SetValue(kLSPVibratoDepth, 0.0);
  const std::vector<float> x = Sine(1000.0, 0.5, kRate, kRate / 10);
  const std::vector<float> still = Apply(vibrato, x, kRate);
  for (std::size_t i = 0; i < x.size(); ++i) ASSERT_NEAR(still[i], x[i], 1e-6) << i;
}

TEST(Chorus, EachClickEchoesWithinTheDelayPlusMinusTheDepthAndTheEchoesSweepThatRange) {
  constexpr std::uint32_t kRate = 48000;
  constexpr std::size_t kEvery = kRate / 8;  // the clicks meet the sweep's turning points
  std::vector<float> clicks(2 * kRate);
  for (std::size_t i = 0; i < clicks.size(); i += kEvery) clicks[i] = 1.0f;
  const double lo = 15e-3 * kRate, hi = 25e-3 * kRate;
  for (int voices : {1, 3}) {
    LSPChorus chorus;
    chorus.SetValue(kLSPChorusVoices, voices);
    chorus.SetValue(kLSPChorusDelay, 20.0);
    chorus.SetValue(kLSPChorusDepth, 5.0);
    chorus.SetValue(kLSPChorusRate, 1.0);
    chorus.SetValue(kLSPChorusMix, 100.0);
    const std::vector<float> y = Apply(chorus, clicks, kRate);
    double nearest = 1e9, farthest = 0;
    for (std::size_t click = 0; click + kEvery <= y.size(); click += kEvery) {
      double inside = 0, all = 0;
      std::size_t peak = 0;
      for (std::size_t i = 0; i < kEvery; ++i) {
        const double e = double(y[click + i]) * y[click + i];
        all += e;
        if (i + 3 >= lo && i <= hi + 3) inside += e;
        if (std::abs(y[click + i]) > std::abs(y[click + peak])) peak = i;
      }
      EXPECT_GT(inside, 0.999 * all) << voices << " " << click;
      nearest = std::min(nearest, double(peak));
      farthest = std::max(farthest, double(peak));
    }
    if (voices == 1) {
      // The sweep moves on while the echo is on its way: a few frames short of the extremes.
      EXPECT_NEAR(nearest, lo, 4.0);
      EXPECT_NEAR(farthest, hi, 4.0);
    }
  }
}

TEST(Flanger, ItsCombNotchesAndPeaksSitAtTheDelayAndSweepWithTheDepth) {
  constexpr std::uint32_t kRate = 48000;
  LSPFlanger flanger;
  flanger.SetValue(kLSPFlangerDelay, 2.0);  // 96 frames: notches at 250, 750 ... Hz
  flanger.SetValue(kLSPFlangerDepth, 0.0);
  flanger.SetValue(kLSPFlangerFeedback, 0.0);
  flanger.SetValue(kLSPFlangerMix, 50.0);
  auto level = [&](double hz) {
    const std::vector<float> y = Apply(flanger, Sine(hz, 0.5, kRate, kRate / 2), kRate);
    return ToneDb(y, hz, kRate, kRate / 4, kRate / 4) - 20.0 * std::log10(0.5);
  };
  EXPECT_LT(level(250.0), -40.0);
  EXPECT_NEAR(level(500.0), 0.0, 0.1);
  // Half the delayed sound fed back: the peaks rise to 1.5 and the notches to 1/6.
  flanger.SetValue(kLSPFlangerFeedback, 50.0);
  EXPECT_NEAR(level(500.0), 20.0 * std::log10(1.5), 0.2);
  EXPECT_NEAR(level(250.0), 20.0 * std::log10(1.0 / 6.0), 0.2);

  flanger.SetValue(kLSPFlangerFeedback, 0.0);
  flanger.SetValue(kLSPFlangerDepth, 2.0);
  flanger.SetValue(kLSPFlangerRate, 1.0);
  const std::vector<float> swept = Apply(flanger, Sine(250.0, 0.5, kRate, 2 * kRate), kRate);
  const std::vector<double> db = WindowDb(swept, kRate / 50);
  const auto [low, high] = std::minmax_element(db.begin(), db.end());
  EXPECT_GT(*high - *low, 20.0) << "the notch sweeps across the tone";
}
