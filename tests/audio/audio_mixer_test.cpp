#include "audio/audio_mixer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <thread>

#include "audio/audio_null_backend.h"
#include "audio/audio_player.h"
#include "audio_fixture.h"
#include "engine/channel_map_source.h"
#include "engine/resample_source.h"

namespace {

constexpr std::uint32_t kRate = 48000;
constexpr int kChannels = 2;

// A mixer without a reader thread on a paced null output: the test reads ahead
// and moves the clock itself, so every frame is where the test put it.
struct Paced {
  explicit Paced(long latency = 0, long keep = 0)
      : backend(LAudioNullBackend::Options{false, latency, keep, {}}), mixer(kRate, kChannels, false) {
    LAudioStreamSpec shape;
    shape.sampleRate = kRate;
    shape.channels = kChannels;
    shape.bufferFrames = 256;
    EXPECT_EQ(backend.Open(LAudioDirection::kOutput, shape, &mixer, &stream), LAudioStatus::kOK);
    EXPECT_EQ(stream->Start(), LAudioStatus::kOK);
    mixer.LatencySet(latency);
  }
  LAudioNullStream& Null() { return *static_cast<LAudioNullStream*>(stream.get()); }
  // Reads ahead, then plays frames.
  void Play(long long frames) {
    for (long long left = frames; left > 0; left -= 4096) {
      mixer.FillAll();
      Null().Pump(std::min(left, 4096LL));
    }
  }

  LAudioNullBackend backend;
  LAudioMixer mixer;
  std::unique_ptr<LAudioStream> stream;
};

class AudioMixerConversion : public AudioTest, public ::testing::WithParamInterface<std::pair<std::uint32_t, int>> {};

}  // namespace

TEST_P(AudioMixerConversion, WhatIsPlayedIsWhatTheCutListHoldsAcrossSegmentsRateAndChannels) {
  const auto [rate, channels] = GetParam();
  {
    const LCutListAudio list = RampCutList(30000, 12345, channels, rate);
    ASSERT_EQ(list.SegmentCount(), 2);
    Paced paced(0, 40000);
    auto input = paced.mixer.Add(list.OpenSource());
    input->Play(1000, 25000);
    paced.Play(30000);
    EXPECT_TRUE(input->IsFinished());
    EXPECT_EQ(input->Position(), 25000);
    EXPECT_EQ(input->Underruns(), 0);
    paced.stream->Stop();

    // The same conversion read in one go is what the device must have been given.
    const long long from = std::llround(1000.0 * kRate / rate);
    const long long frames = std::llround(25000.0 * kRate / rate) - from;
    LSoundSource converted =
        LSRCChannelMap::Convert(LSRCResample::Convert(list.OpenSource(), kRate), kChannels);
    const std::vector<float> expected = ReadAll(converted, from, frames);
    const std::vector<float>& played = paced.Null().Played();
    ASSERT_GE(played.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(played[i], expected[i]) << "sample " << i;
    for (std::size_t i = expected.size(); i < played.size(); ++i) ASSERT_EQ(played[i], 0.0f) << "after the end";
    if (rate == kRate && channels == kChannels) {
      EXPECT_EQ(played[0], RampValue(1000, 0));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(RatesAndChannels, AudioMixerConversion,
                         ::testing::Values(std::make_pair(48000u, 2), std::make_pair(44100u, 1),
                                           std::make_pair(48000u, 1)));

TEST_F(AudioTest, PositionIsTheFrameHeardNowThroughSeekPauseResumeAndLoop) {
  Paced paced(300);
  auto input = paced.mixer.Add(MakeRamp(48000, kChannels, kRate));
  EXPECT_TRUE(input->IsFinished()) << "a new input is stopped";
  input->Play(1000);
  EXPECT_FALSE(input->IsFinished());
  EXPECT_EQ(input->Position(), 1000) << "before any sound the start is the place";
  paced.Play(1024);
  EXPECT_EQ(input->Position(), 1000 + 1024 - 300);

  input->Seek(5000);
  paced.Null().Pump(256);  // the callback drops what was read for the old place
  EXPECT_EQ(input->Position(), 1000 + 980) << "what was handed over before the seek is still heard";
  paced.Play(1024);
  EXPECT_EQ(input->Position(), 5000 + 724);

  input->Pause();
  paced.Play(1024);
  EXPECT_EQ(input->Position(), 6024) << "paused: the last frame handed over";
  paced.Play(4096);
  EXPECT_EQ(input->Position(), 6024);
  input->Resume();
  paced.Null().Pump(512);
  EXPECT_EQ(input->Position(), 6024 + 212);
  EXPECT_EQ(input->Underruns(), 0);

  // Not read ahead: the ring runs dry while data is due.
  paced.Null().Pump(48000);
  EXPECT_GT(input->Underruns(), 0);

  auto loop = paced.mixer.Add(MakeRamp(48000, kChannels, kRate));
  input->Stop();
  loop->Play(100, 300, true);
  paced.Play(1000);
  EXPECT_FALSE(loop->IsFinished());
  EXPECT_EQ(loop->Position(), 100 + (1000 - 300) % 200);
}

TEST_F(AudioTest, LoopRepeatsTheRangeExactlyAndInputsSumWithGainPanAndMute) {
  Paced paced(0, 2000);
  auto a = paced.mixer.Add(MakeRamp(48000, kChannels, kRate));
  auto b = paced.mixer.Add(MakeRamp(48000, 1, kRate));
  auto muted = paced.mixer.Add(MakeRamp(48000, kChannels, kRate));
  a->GainSet(0.5f);
  a->PanSet(-1.0f);
  muted->MuteSet(true);
  a->Play(100, 300, true);
  b->Play(0);
  muted->Play(0);
  paced.Play(2000);
  const std::vector<float>& out = paced.Null().Played();
  ASSERT_EQ(out.size(), 4000u);
  for (long long f = 0; f < 2000; ++f) {
    const float left = 0.5f * RampValue(100 + f % 200, 0) + RampValue(f, 0);
    ASSERT_EQ(out[f * 2], left) << "frame " << f;
    ASSERT_EQ(out[f * 2 + 1], RampValue(f, 0)) << "panned hard left, a is silent on the right; frame " << f;
  }
}

TEST(AudioLevels, PeakRmsAndClipOfASineAndAFullScaleSample) {
  LAudioLevels levels;
  std::vector<float> sine(4800 * 2);
  for (int f = 0; f < 4800; ++f) {
    sine[f * 2] = 0.5f * std::sin(2.0f * 3.14159265f * 1000.0f * f / 48000.0f);
    sine[f * 2 + 1] = 0.0f;
  }
  levels.Measure(sine.data(), 2400, 2);
  levels.Measure(sine.data() + 4800, 2400, 2);
  LAudioLevelReading r = levels.Take();
  ASSERT_EQ(r.channels, 2);
  EXPECT_NEAR(r.peak[0], 0.5f, 1e-3);
  EXPECT_NEAR(r.rms[0], 0.5f / std::sqrt(2.0f), 1e-3);
  EXPECT_EQ(r.peak[1], 0.0f);
  EXPECT_FALSE(r.clipped[0]);
  sine[3] = -1.0f;
  levels.Measure(sine.data(), 4800, 2);
  r = levels.Take();
  EXPECT_TRUE(r.clipped[1]);
  EXPECT_FALSE(r.clipped[0]);
  EXPECT_EQ(levels.Take().peak[0], 0.0f) << "a reading starts afresh";
}

TEST_F(AudioTest, PlayerPlaysToTheEndOnARealTimeClockAndReportsALostDevice) {
  LAudioNullBackend backend(LAudioNullBackend::Options{true, 128, 48000, {}});
  LAudioPlayer player(backend);
  LAudioStreamSpec shape;
  shape.bufferFrames = 256;
  ASSERT_EQ(player.Open(shape), LAudioStatus::kOK);
  auto input = player.Play(MakeRamp(4800, kChannels, 44100));
  ASSERT_NE(input, nullptr);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!input->IsFinished() && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  ASSERT_TRUE(input->IsFinished());
  EXPECT_EQ(input->Position(), 4800);
  LAudioNullStream* stream = backend.LastStream();
  stream->Stop();

  // Gaps of a late reader are silence; the sound itself arrives whole and in order.
  auto sound = [](const std::vector<float>& s) {
    std::vector<float> kept;
    for (std::size_t i = 0; i + 1 < s.size(); i += 2)
      if (s[i] != 0.0f || s[i + 1] != 0.0f) kept.insert(kept.end(), {s[i], s[i + 1]});
    return kept;
  };
  const std::vector<float> expected =
      sound(ReadAll(LSRCChannelMap::Convert(LSRCResample::Convert(MakeRamp(4800, kChannels, 44100), 48000), 2), 0, 5224));
  EXPECT_EQ(sound(stream->Played()), expected);

  stream->Vanish();
  EXPECT_EQ(player.Status(), LAudioStatus::kDeviceLost);
  EXPECT_NE(player.Message().find("nicht mehr verfügbar"), std::string::npos) << player.Message();
}

TEST_F(AudioTest, APreviewGoesOnWithTheNewSourceFromTheFrameHeard) {
  Paced paced(0, 2048);
  auto input = paced.mixer.Add(MakeRamp(48000, kChannels, kRate));
  input->Play(0);
  paced.Play(1024);
  // What an effect dialog does when a setting changes: a new processing source over the same input.
  LSRCChannelMap::Map doubled(kChannels);
  for (int c = 0; c < kChannels; ++c) doubled[c].push_back({c, 2.0f});
  EXPECT_FALSE(input->SourceSet(MakeRamp(48000, kChannels, 44100))) << "another rate is refused";
  ASSERT_TRUE(input->SourceSet(LSRCChannelMap::Make(MakeRamp(48000, kChannels, kRate), doubled)));
  paced.Play(1024);
  const std::vector<float>& out = paced.Null().Played();
  ASSERT_EQ(out.size(), 2048u * kChannels);
  for (long long f = 0; f < 1024; ++f) {
    ASSERT_EQ(out[f * kChannels], RampValue(f, 0)) << "frame " << f;
    ASSERT_EQ(out[(1024 + f) * kChannels + 1], 2.0f * RampValue(1024 + f, 1)) << "frame " << 1024 + f;
  }
}
