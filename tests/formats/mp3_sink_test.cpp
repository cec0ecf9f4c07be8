#include "formats/mp3_sink.h"

#include <gtest/gtest.h>

#include <cmath>

#include "codec_fixtures.h"
#include "engine/source_to_sink.h"
#include "formats/ffmpeg_source.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

namespace {

// Silence with short bursts (a 2 kHz tone under a Hann window) at the given frames,
// the same on every channel: a decoder that shifts the sound moves the bursts.
std::vector<float> Bursts(long long frames, int channels, int rate, std::initializer_list<long long> at) {
  std::vector<float> out(static_cast<size_t>(frames * channels), 0.0f);
  const int length = rate / 200;
  for (long long start : at) {
    for (int i = 0; i < length; ++i) {
      const double window = 0.5 - 0.5 * std::cos(2.0 * M_PI * i / length);
      const float v = static_cast<float>(0.8 * window * std::sin(2.0 * M_PI * 2000.0 * i / rate));
      for (int c = 0; c < channels; ++c) out[static_cast<size_t>((start + i) * channels + c)] = v;
    }
  }
  return out;
}

// The shift (within +-range) at which the decoded channel 0 matches the original best.
long long BestLag(const std::vector<float>& original, const std::vector<float>& decoded, int channels,
                  long long range) {
  const long long frames = static_cast<long long>(std::min(original.size(), decoded.size())) / channels;
  long long best = 0;
  double bestScore = -1e300;
  for (long long lag = -range; lag <= range; ++lag) {
    double score = 0.0;
    for (long long f = std::max(0LL, -lag); f < frames && f + lag < frames; ++f) {
      score += static_cast<double>(original[f * channels]) * decoded[(f + lag) * channels];
    }
    if (score > bestScore) {
      bestScore = score;
      best = lag;
    }
  }
  return best;
}

void WriteMp3(const std::string& path, const std::vector<float>& frames, int channels, int rate,
              const LMP3SinkFormat& format, const LFileTagDataAudio* tags) {
  LSoundSink sink = LMakeSink<LSNKMP3>(path.c_str(), format, tags);
  ASSERT_FALSE(sink.HasError());
  LPRSourceToSink job("", MemorySource(frames, channels, static_cast<unsigned>(rate)), sink, true);
  sink = LSoundSink();
  LProcessInterfaceQuiet quiet;
  ASSERT_EQ(Process(quiet, job), kLProcessSuccess);
}

}  // namespace

TEST(MP3Sink, TakesTheNearestMpegRateAndAtMostTwoChannels) {
  EXPECT_EQ(LSNKMP3::SupportedRate(44100), 44100u);
  EXPECT_EQ(LSNKMP3::SupportedRate(45000), 44100u);
  EXPECT_EQ(LSNKMP3::SupportedRate(96000), 48000u);
  EXPECT_EQ(LSNKMP3::SupportedRate(7000), 8000u);
  EXPECT_EQ(LSNKMP3::SupportedRate(11000), 11025u);
  if (!LSNKMP3::IsAvailable()) GTEST_SKIP() << "this build has no LAME";
  TempFolder folder;
  LMP3SinkFormat format;
  format.sampleRate = 96000;
  format.channels = 6;
  LSoundSink sink = LMakeSink<LSNKMP3>(folder.File("a.mp3").c_str(), format);
  EXPECT_FALSE(sink.HasError());
  EXPECT_EQ(sink.GetSampleRate(), 48000u);
  EXPECT_EQ(sink.GetChannels(), 2);
}

#if defined(SONVALE_HAVE_LAME) && defined(SONVALE_HAVE_FFMPEG)

TEST(MP3Sink, ASavedFileKeepsItsLengthLinesUpInTimeAndKeepsItsRateChannelsAndTags) {
  TempFolder folder;
  struct Case {
    int channels;
    int rate;
    int bitRate;
    int vbrQuality;
    const LFileTagDataAudio* tags;
  };
  LFileTagDataAudio tags;
  tags.Set("TITLE", "Überschrift");
  tags.Set("ARTIST", "Künstlerin");
  const Case cases[] = {{2, 44100, 192, -1, nullptr}, {1, 22050, 0, -1, nullptr}, {2, 48000, 0, 4, &tags}};
  for (const Case& c : cases) {
    const long long frames = c.rate * 2;
    const std::vector<float> original = Bursts(frames, c.channels, c.rate, {c.rate / 4, c.rate + 333});
    const std::string path = folder.File("b" + std::to_string(c.rate) + ".mp3");
    LMP3SinkFormat format;
    format.sampleRate = static_cast<std::uint32_t>(c.rate);
    format.channels = static_cast<std::uint8_t>(c.channels);
    format.bitRate = c.bitRate;
    if (c.vbrQuality >= 0) format.vbrQuality = c.vbrQuality;
    WriteMp3(path, original, c.channels, c.rate, format, c.tags);

    LSoundFileInfo info;
    LSoundSource back = LFFmpegSource::Open(path.c_str(), &info);
    ASSERT_FALSE(back.IsError());
    EXPECT_EQ(back.GetChannels(), c.channels);
    EXPECT_EQ(back.GetSampleRate(), static_cast<unsigned>(c.rate));
    EXPECT_EQ(back.GetEndSample(), frames);  // exact: the info frame records the delay and padding
    const std::vector<float> decoded = ReadWhole(back);
    EXPECT_EQ(BestLag(original, decoded, c.channels, 1500), 0);
    // The bursts come back where they were, at nearly their level.
    double peak = 0.0;
    for (long long f = c.rate / 4; f < c.rate / 4 + c.rate / 200; ++f) {
      peak = std::max(peak, static_cast<double>(std::fabs(decoded[f * c.channels])));
    }
    EXPECT_GT(peak, 0.6);

    // Read through FFmpeg's own demuxer: what ffprobe would say.
    EXPECT_EQ(info.codecName, "mp3");
    EXPECT_STREQ(info.tags.Get("TITLE"), c.tags ? "Überschrift" : nullptr);
    EXPECT_STREQ(info.tags.Get("ARTIST"), c.tags ? "Künstlerin" : nullptr);
  }
}

#endif
