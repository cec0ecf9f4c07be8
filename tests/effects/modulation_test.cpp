// The swept and moving effects, measured on sines made here: where their notches,
// bands and pitch are at a given moment.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "effect_test_levels.h"
#include "effect_test_sources.h"
#include "effects/doppler.h"
#include "effects/phaser.h"
#include "effects/wahwah.h"

namespace {

constexpr std::uint32_t kRate = 44100;

std::vector<float> Apply(LSoundProcess& effect, std::vector<float> x, int channels) {
  const long long frames = static_cast<long long>(x.size()) / channels;
  LSoundSource input = MakeBufferSource(std::move(x), kRate, static_cast<std::uint8_t>(channels));
  LSoundSource out = effect.OpenSource(input);
  return ReadAll(out, frames, 1000);
}

std::vector<float> Add(std::vector<float> a, const std::vector<float>& b) {
  for (std::size_t i = 0; i < a.size(); ++i) a[i] += b[i];
  return a;
}

// Frequency of channel `channel` over [from, from + count) by counting rising zero crossings.
double CountedHz(const std::vector<float>& s, std::size_t from, std::size_t count, int channels, int channel) {
  int rising = 0;
  for (std::size_t i = from + 1; i < from + count; ++i)
    if (s[(i - 1) * channels + channel] < 0 && s[i * channels + channel] >= 0) ++rising;
  return rising * static_cast<double>(kRate) / count;
}

}  // namespace

TEST(Phaser, FourStagesHalfMixedNotchWhereTheirPhaseTurnsHalfAndTheSweepMovesTheNotch) {
  LSPPhaser phaser;
  phaser.SetValue(kLSPPhaserStages, 4);
  phaser.SetValue(kLSPPhaserDepth, 0.0);
  phaser.SetValue(kLSPPhaserFeedback, 0.0);
  phaser.SetValue(kLSPPhaserHz, 1000.0);
  phaser.SetValue(kLSPPhaserMix, 50.0);
  // Each stage turns a quarter at 1 kHz; four turn a half a little below.
  const double notch = kRate / std::numbers::pi * std::atan(std::tan(std::numbers::pi * 1000.0 / kRate) * std::tan(std::numbers::pi / 8));
  const std::size_t second = kRate;
  std::vector<float> y = Apply(phaser, Add(Sine(notch, 0.25, kRate, 2 * kRate), Sine(1000.0, 0.25, kRate, 2 * kRate)), 1);
  EXPECT_LT(ToneDb(y, notch, kRate, second, second) - 20 * std::log10(0.25), -30.0);
  EXPECT_NEAR(ToneDb(y, 1000.0, kRate, second, second) - 20 * std::log10(0.25), 0.0, 0.5);

  phaser.SetValue(kLSPPhaserDepth, 100.0);
  phaser.SetValue(kLSPPhaserRate, 1.0);
  y = Apply(phaser, Sine(notch, 0.25, kRate, 2 * kRate), 1);
  double low = 0, high = -200;
  for (std::size_t at = second; at < 2 * second; at += 441) {
    const double db = RmsDb(y, at, 441);
    low = std::min(low, db);
    high = std::max(high, db);
  }
  EXPECT_GT(high - low, 20.0) << "the notch passes over the tone once a cycle";
}

TEST(Wahwah, TheBandStandsAtTheTopOfItsRangeAtTheSweepsCrestAndAtTheBottomAtItsTrough) {
  LSPWahwah wah;
  wah.SetValue(kLSPWahRate, 1.0);
  wah.SetValue(kLSPWahDepth, 100.0);
  wah.SetValue(kLSPWahResonance, 5.0);
  wah.SetValue(kLSPWahLowHz, 400.0);
  wah.SetValue(kLSPWahHighHz, 2000.0);
  wah.SetValue(kLSPWahMix, 100.0);
  const std::vector<float> y = Apply(wah, Add(Sine(400.0, 0.25, kRate, 2 * kRate), Sine(2000.0, 0.25, kRate, 2 * kRate)), 1);
  const std::size_t window = 882;  // 20 ms, whole cycles of both
  const std::size_t crest = kRate * 5 / 4 - window / 2, trough = kRate * 7 / 4 - window / 2;
  EXPECT_GT(ToneDb(y, 2000.0, kRate, crest, window) - ToneDb(y, 400.0, kRate, crest, window), 15.0);
  EXPECT_GT(ToneDb(y, 400.0, kRate, trough, window) - ToneDb(y, 2000.0, kRate, trough, window), 15.0);
  EXPECT_NEAR(ToneDb(y, 2000.0, kRate, crest, window) - 20 * std::log10(0.25), 0.0, 1.0) << "unity at the band's peak";
}

TEST(Doppler, TheSourceSoundsHigherComingThanGoingIsLoudestNearestAndCrossesFromLeftToRight) {
  LSPDoppler doppler;
  doppler.SetValue(kLSPDopplerKmh, 100.0);
  doppler.SetValue(kLSPDopplerDistance, 10.0);
  doppler.SetValue(kLSPDopplerPass, 50.0);
  const long long frames = 20LL * kRate;
  const std::vector<float> y = Apply(doppler, Sine(1000.0, 0.5, kRate, frames, 2), 2);
  // Eight seconds either side of the pass the source is 222 m off and moves almost straight along the line.
  const double v = 100.0 / 3.6, along = v * 8.0, cosine = along / std::hypot(along, 10.0);
  const std::size_t window = kRate / 2;
  const std::size_t coming = 2 * kRate - window / 2, going = 18 * kRate - window / 2;
  EXPECT_NEAR(CountedHz(y, coming, window, 2, 0), 1000.0 * (1 + v * cosine / kLSpeedOfSound), 2.0);
  EXPECT_NEAR(CountedHz(y, going, window, 2, 1), 1000.0 * (1 - v * cosine / kLSpeedOfSound), 2.0);

  std::vector<float> left(static_cast<std::size_t>(frames)), right(left.size());
  for (std::size_t i = 0; i < left.size(); ++i) {
    left[i] = y[2 * i];
    right[i] = y[2 * i + 1];
  }
  const std::size_t nearest = 10 * kRate - window / 2;
  EXPECT_GT(RmsDb(left, nearest, window), RmsDb(left, coming, window) + 20.0);
  EXPECT_GT(RmsDb(left, coming, window), RmsDb(right, coming, window) + 20.0);
  EXPECT_GT(RmsDb(right, going, window), RmsDb(left, going, window) + 20.0);
}
