// The effects that give a sound a character of its own (telephone, radio, voice)
// and the vocal reduction, measured on sines made here.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "effect_test_levels.h"
#include "effect_test_sources.h"
#include "effects/am_radio.h"
#include "effects/cb_radio_chain.h"
#include "effects/reduce_vocals.h"
#include "effects/sound_process_type.h"
#include "effects/telephone.h"
#include "effects/voice_pitch.h"

namespace {

constexpr std::uint32_t kRate = 44100;

// The effect over a mono signal at 44.1 kHz, read in blocks of 1000.
std::vector<float> Apply(LSoundProcess& effect, std::vector<float> x) {
  const long long frames = static_cast<long long>(x.size());
  LSoundSource input = MakeBufferSource(std::move(x), kRate, 1);
  LSoundSource out = effect.OpenSource(input);
  return ReadAll(out, frames, 1000);
}

std::vector<float> Tones(std::initializer_list<double> hz, double amplitude, long long frames) {
  std::vector<float> s(static_cast<std::size_t>(frames), 0.0f);
  for (double f : hz) {
    const std::vector<float> t = Sine(f, amplitude, kRate, frames);
    for (std::size_t i = 0; i < s.size(); ++i) s[i] += t[i];
  }
  return s;
}

// Level change of `hz` through the effect, in dB, over the second second.
double Through(const std::vector<float>& y, double hz, double amplitude) {
  return ToneDb(y, hz, kRate, kRate, kRate) - 20 * std::log10(amplitude);
}

}  // namespace

TEST(Telephone, KeepsTheVoiceBandCutsBelow200HzAndAbove4kHzAndItsCodecAddsGrain) {
  LSPTelephone phone;
  const std::vector<float> x = Tones({150, 1000, 4500, 6000}, 0.2, 2 * kRate);
  const std::vector<float> y = Apply(phone, x);
  EXPECT_NEAR(Through(y, 1000, 0.2), 0.0, 1.0);
  EXPECT_LT(Through(y, 150, 0.2), -30.0);
  EXPECT_LT(Through(y, 4500, 0.2), -30.0);
  EXPECT_LT(Through(y, 6000, 0.2), -30.0);

  // The grain is what 8 bits add over 16: about 40 dB under a full tone.
  LSPTelephone clean;
  clean.SetValue(kLSPTelephoneBits, 16);
  std::vector<float> grain = Apply(phone, Tones({1000}, 0.5, kRate));
  const std::vector<float> fine = Apply(clean, Tones({1000}, 0.5, kRate));
  for (std::size_t i = 0; i < grain.size(); ++i) grain[i] -= fine[i];
  const double grainDb = RmsDb(grain, kRate / 2, kRate / 2) - RmsDb(fine, kRate / 2, kRate / 2);
  EXPECT_GT(grainDb, -50.0);
  EXPECT_LT(grainDb, -25.0);
}

TEST(AMRadio, LimitsTheBandHissesAtItsLevelAndFadesByItsDepth) {
  LSPAMRadio radio;
  radio.SetValue(kLSPAMRadioFade, 0.0);
  std::vector<float> y = Apply(radio, Tones({40, 1000, 12000}, 0.2, 2 * kRate));
  EXPECT_NEAR(Through(y, 1000, 0.2), 0.0, 1.0);
  EXPECT_LT(Through(y, 40, 0.2), -30.0);
  EXPECT_LT(Through(y, 12000, 0.2), -25.0);

  // White hiss of -40 dB keeps the share of it the band lets through.
  radio.SetValue(kLSPAMRadioNoiseDb, -40.0);
  y = Apply(radio, std::vector<float>(kRate, 0.0f));
  const double band = 10 * std::log10((4500.0 - 150.0) / (kRate / 2.0));
  EXPECT_NEAR(RmsDb(y, kRate / 2, kRate / 2), -40.0 + band, 2.0);

  radio.SetValue(kLSPAMRadioNoiseDb, -90.0);
  radio.SetValue(kLSPAMRadioFade, 100.0);
  radio.SetValue(kLSPAMRadioFadeHz, 1.0);
  y = Apply(radio, Tones({1000}, 0.5, 10 * kRate));
  double low = 0, high = -200;
  for (std::size_t at = 0; at + 2205 <= y.size(); at += 2205) {
    low = std::min(low, RmsDb(y, at, 2205));
    high = std::max(high, RmsDb(y, at, 2205));
  }
  EXPECT_GT(high - low, 15.0);
  EXPECT_LT(high, -3.0 + 0.5) << "fading only takes away";
}

TEST(CBRadio, TheChainRunsBandToSquelchAndTheSquelchSilencesThePauseAfterATransmission) {
  LSoundProcessMulti chain = LCBRadioChain();
  ASSERT_GE(chain.GetCount(), 4);
  EXPECT_EQ(chain.GetAt(0)->GetSoundProcessType(), kLSPTypeHighPass);
  EXPECT_EQ(chain.GetAt(chain.GetCount() - 1)->GetSoundProcessType(), kLSPTypeNoiseGate);

  std::vector<float> x = Tones({100, 1000}, 0.2, 2 * kRate);
  std::fill(x.begin() + kRate, x.end(), 0.0f);
  LSoundSource input = MakeBufferSource(x, kRate, 1);
  LSoundSource out = chain.OpenSource(input);
  const std::vector<float> y = ReadAll(out, 2 * kRate, 1000);
  const std::size_t talk = kRate / 4;
  EXPECT_GT(ToneDb(y, 1000, kRate, talk, kRate / 2) - ToneDb(y, 100, kRate, talk, kRate / 2), 30.0);
  EXPECT_GT(RmsDb(y, talk, kRate / 2), RmsDb(y, kRate + kRate / 2, kRate / 2) + 50.0) << "the pause is squelched";
}

TEST(VoicePitch, MovesThePitchByItsSemitonesAndTheRobotRingModulates) {
  LSPVoicePitch voice;
  voice.SetValue(kLSPVoiceSemitones, 12.0);
  std::vector<float> y = Apply(voice, Tones({300}, 0.3, 2 * kRate));
  EXPECT_GT(ToneDb(y, 600, kRate, kRate, kRate), ToneDb(y, 300, kRate, kRate, kRate) + 20.0);
  EXPECT_NEAR(RmsDb(y, kRate, kRate), RmsDb(Tones({300}, 0.3, kRate), 0, kRate), 3.0);

  for (int preset = 0; preset < voice.GetNumPresets(); ++preset) {
    char name[64] = {};
    voice.GetPresetsName(preset, name);
    voice.SetPreset(preset);
    y = Apply(voice, Tones({300}, 0.3, 2 * kRate));
    const double moved = 300.0 * std::exp2(voice.Value(kLSPVoiceSemitones) / 12.0);
    const double robot = voice.Value(kLSPVoiceRobotHz);
    if (robot > 0) {
      EXPECT_LT(Through(y, 300, 0.3), -30.0) << name;
      EXPECT_NEAR(Through(y, 300 + robot, 0.3), -3.0, 1.0) << name;
      // Unshifted, the voice keeps its place in time.
      const std::vector<float> x = Tones({300}, 0.3, 2 * kRate);
      for (std::size_t i = 10; i < 110; ++i)
        ASSERT_NEAR(y[i], x[i] * std::sqrt(2.0) * std::sin(2 * std::numbers::pi * robot * i / kRate), 1e-4) << i;
    } else {
      EXPECT_GT(ToneDb(y, moved, kRate, kRate, kRate), ToneDb(y, 300, kRate, kRate, kRate) + 20.0) << name;
    }
  }
}

TEST(ReduceVocals, CancelsACentredVoiceKeepsASidePannedToneAndTheBassInAnyBlocks) {
  const long long frames = 3 * kRate;
  const std::vector<float> voice = Tones({220, 440, 660, 880, 1100, 1320}, 0.05, frames);
  const std::vector<float> bass = Tones({60}, 0.2, frames);
  const std::vector<float> tone = Tones({1650}, 0.2, frames);
  std::vector<float> x(static_cast<std::size_t>(2 * frames));
  for (std::size_t i = 0; i < voice.size(); ++i) {
    x[2 * i] = voice[i] + bass[i] + tone[i];
    x[2 * i + 1] = voice[i] + bass[i];
  }
  LSoundSource whole = MakeBufferSource(x, kRate, 2);
  LSoundSource a = LMakeSource<LSRCReduceVocals>(whole);
  const std::vector<float> y = ReadAll(a, frames, frames);
  for (double hz : {220, 440, 880, 1320})
    EXPECT_LT(ToneDb(y, hz, kRate, kRate, kRate, 2, 1) - 20 * std::log10(0.05), -25.0) << hz;
  EXPECT_NEAR(ToneDb(y, 1650, kRate, kRate, kRate, 2, 0) - 20 * std::log10(0.2), 0.0, 1.0);
  EXPECT_NEAR(ToneDb(y, 60, kRate, kRate, kRate, 2, 1) - 20 * std::log10(0.2), 0.0, 1.0);

  LSoundSource blocks = MakeBufferSource(x, kRate, 2);
  LSoundSource b = LMakeSource<LSRCReduceVocals>(blocks);
  EXPECT_EQ(ReadAll(b, frames, 234), y);
  const long long at = 2 * kRate + 17;
  b.Seek(at);
  EXPECT_EQ(b.GetPositionSample(), at);
  const std::vector<float> part = ReadAll(b, 3000, 1000);
  for (std::size_t i = 0; i < part.size(); ++i) ASSERT_NEAR(part[i], y[2 * at + i], 1e-5) << i;
}
