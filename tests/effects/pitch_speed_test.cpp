// Tempo, pitch and speed measured on a tone: its frequency by zero crossings,
// the result's length in frames.
#include <gtest/gtest.h>

#include "effect_test_sources.h"
#include "effects/pitch_speed.h"

namespace {

constexpr std::uint32_t kRate = 44100;
constexpr long long kFrames = 2 * kRate;

// Frequency of channel 0 over frames [from, from + count), from its rising zero crossings.
double Hz(const std::vector<float>& s, int channels, long long from, long long count) {
  double first = -1, last = -1;
  int crossings = 0;
  for (long long i = from + 1; i < from + count; ++i) {
    const float a = s[(i - 1) * channels], b = s[i * channels];
    if (a < 0 && b >= 0) {
      const double at = static_cast<double>(i - 1) + a / (a - b);
      if (first < 0) first = at;
      last = at;
      ++crossings;
    }
  }
  return crossings < 2 ? 0.0 : (crossings - 1) * kRate / (last - first);
}

struct Rendered {
  long long end;
  std::vector<float> out;
};

Rendered Render(LSoundProcess& effect, int channels, long long block) {
  LSoundSource in = MakeBufferSource(Sine(440.0, 0.5, kRate, kFrames, channels), kRate, static_cast<std::uint8_t>(channels));
  LSoundSource out = effect.OpenSource(in);
  const long long end = out.GetEndSample();
  return {end, ReadAll(out, end, block)};
}

}  // namespace

TEST(PitchSpeed, PitchMovesTheToneAndKeepsTheLengthToTheFrame) {
  for (double formants : {0.0, 1.0}) {
    LSPPitch pitch;
    pitch.SetValue(kLSPPitchSemitones, 12);
    pitch.SetValue(kLSPPitchFormants, formants);
    const Rendered r = Render(pitch, 2, 4096);
    ASSERT_EQ(r.end, kFrames);
    EXPECT_NEAR(Hz(r.out, 2, kRate / 4, kRate), 880.0, 1.0) << formants;
    if (formants > 0) continue;  // a lone sine loses level when its formant stays behind
    // Aligned and whole: level from the first frames to the last, not a latency late or early.
    auto rms = [&](long long from) {
      double e = 0;
      for (long long i = from; i < from + 1024; ++i) e += r.out[2 * i] * r.out[2 * i];
      return std::sqrt(e / 1024);
    };
    EXPECT_GT(rms(256), 0.3);
    EXPECT_GT(rms(kFrames - 1024), 0.25);
  }
}

TEST(PitchSpeed, TempoChangesTheLengthAndSpeedThePitchToo) {
  LSPPitchSpeed slower;
  slower.SetValue(kLSPPitchSpeedTempo, 50);
  const Rendered a = Render(slower, 2, 4096);
  EXPECT_NEAR(static_cast<double>(a.end), 2.0 * kFrames, 1.0);
  EXPECT_NEAR(Hz(a.out, 2, kRate / 2, 2 * kRate), 440.0, 1.0);

  LSPPitchSpeed faster;
  faster.SetValue(kLSPPitchSpeedSpeed, 200);
  const Rendered b = Render(faster, 1, 4096);
  EXPECT_NEAR(static_cast<double>(b.end), kFrames / 2.0, 1.0);
  EXPECT_NEAR(Hz(b.out, 1, kRate / 8, kRate / 2), 880.0, 1.0);
}

TEST(PitchSpeed, OddBlocksReadTheSameAndASeekLandsOnTheTone) {
  LSPPitchSpeed both;
  both.SetValue(kLSPPitchSpeedTempo, 80);
  both.SetValue(kLSPPitchSpeedSemitones, -5);
  const Rendered whole = Render(both, 2, 1 << 20);
  const Rendered odd = Render(both, 2, 234);
  ASSERT_EQ(odd.end, whole.end);
  EXPECT_EQ(odd.out, whole.out);

  LSoundSource in = MakeBufferSource(Sine(440.0, 0.5, kRate, kFrames, 2), kRate, 2);
  LSoundSource out = both.OpenSource(in);
  const long long at = kRate + 17;
  out.Seek(at);
  const std::vector<float> part = ReadAll(out, kRate / 2, 1000);
  EXPECT_EQ(out.GetPositionSample(), at + kRate / 2);
  EXPECT_NEAR(Hz(part, 2, kRate / 10, kRate / 3), 440.0 * std::pow(2.0, -5.0 / 12.0), 1.0);
}

TEST(PitchSpeed, AProfileSlowsDownAndRisesAlongItsCurve) {
  LStretchSettings s;
  s.profile = {{1.0, 50.0, 12.0}, {0.0, 100.0, 0.0}, {0.5, 100.0, 0.0}};
  LSoundSource in = MakeBufferSource(Sine(440.0, 0.5, kRate, kFrames, 1), kRate, 1);
  LSoundSource out = LOpenPitchSpeed(in, s, 1.0);
  // Half as it was, then the integral of 100 / tempo over a tempo going straight from 100 to 50 %: 2 ln 2.
  const long long end = out.GetEndSample();
  EXPECT_NEAR(static_cast<double>(end) / kFrames, 0.5 + std::log(2.0), 0.01);
  const std::vector<float> y = ReadAll(out, end, 777);
  EXPECT_NEAR(Hz(y, 1, kRate / 10, kRate / 2), 440.0, 1.0);
  EXPECT_NEAR(Hz(y, 1, end - kRate / 10, kRate / 20), 880.0, 30.0);
}
