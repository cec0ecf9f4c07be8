#include "formats/ffmpeg_sink.h"

#include <gtest/gtest.h>

#include <cmath>

#include "codec_fixtures.h"
#include "engine/sample_format.h"
#include "engine/source_to_sink.h"
#include "formats/ffmpeg_source.h"
#include "formats/ffmpeg_tag_keys.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

TEST(FFmpegSink, CodecsTakeTheRatesAndChannelsTheyHold) {
  EXPECT_EQ(LSNKFFmpeg::SupportedRate(LFFmpegSinkCodec::kOpus, 44100), 48000u);
  EXPECT_EQ(LSNKFFmpeg::SupportedRate(LFFmpegSinkCodec::kFlac, 44100), 44100u);
  EXPECT_EQ(LSNKFFmpeg::SupportedRate(LFFmpegSinkCodec::kFlac, 1000000), 655350u);
  EXPECT_EQ(LSNKFFmpeg::SupportedChannels(LFFmpegSinkCodec::kVorbis, 12), 8);
  EXPECT_EQ(LSNKFFmpeg::SupportedChannels(LFFmpegSinkCodec::kRF64, 12), 12);
  EXPECT_EQ(LTagKeyToFFmpeg("ALBUMARTIST"), "album_artist");
  EXPECT_EQ(LTagKeyToFFmpeg("marker_0_pos"), "");
  EXPECT_EQ(LTagKeyToFFmpeg("MOOD"), "mood");
  EXPECT_EQ(LTagKeyFromFFmpeg("track"), "TRACKNUMBER");
  EXPECT_EQ(LTagKeyFromFFmpeg("mood"), "MOOD");
}

#ifdef SONVALE_HAVE_FFMPEG

namespace {

struct SinkCase {
  const char* name;
  const char* file;
  LFFmpegSinkCodec codec;
  int bits;
  bool floating;
  const char* codecName;  // as FFmpeg names it
  // Integer PCM reads back exactly as our WAVE writer and reader of that width
  // make it; float within the tolerance; lossy codecs are judged by their alignment.
  double tolerance;
};

// The frames as they come back from a WAVE file of that width of ours.
std::vector<float> ThroughWave(const std::vector<float>& in, int bits) {
  std::vector<unsigned char> bytes(in.size() * 3);
  std::vector<float> out(in.size());
  const auto n = static_cast<long long>(in.size());
  if (bits == 16) {
    ConvertSamplesOut<LSF16>(bytes.data(), in.data(), n);
    ConvertSamplesIn<LSF16>(out.data(), bytes.data(), n);
  } else {
    ConvertSamplesOut<LSFLE24>(bytes.data(), in.data(), n);
    ConvertSamplesIn<LSFLE24>(out.data(), bytes.data(), n);
  }
  return out;
}

void PrintTo(const SinkCase& c, std::ostream* os) { *os << c.name; }

class FFmpegSinkWrites : public ::testing::TestWithParam<SinkCase> {};

}  // namespace

TEST_P(FFmpegSinkWrites, FilesThatOutsideToolsAndWeReadBackAsWritten) {
  const SinkCase& c = GetParam();
  if (const char* missing = LSNKFFmpeg::MissingEncoder(c.codec)) GTEST_SKIP() << "no encoder " << missing;
  TempFolder folder;
  const std::string path = folder.File(c.file);
  LFFmpegSinkFormat format;
  format.codec = c.codec;
  format.sampleRate = 48000;
  format.channels = 2;
  format.bitsPerSample = c.bits;
  format.floating = c.floating;
  LFileTagDataAudio tags;
  tags.Set("TITLE", "Prüfton");
  tags.Set("ARTIST", "Sonvale");
  tags.Set("TRACKNUMBER", "3");
  const long long frames = 48000 * 3 / 2;
  const std::vector<float> sine = SineFrames(frames, 2, 48000, 997.0, 0.7);
  {
    LSoundSink sink = LMakeSink<LSNKFFmpeg>(path.c_str(), format, &tags);
    ASSERT_FALSE(sink.HasError());
    ASSERT_EQ(sink.GetSampleRate(), 48000u);
    // Odd pieces, so that the encoder's frames are filled across calls.
    for (long long at = 0; at < frames; at += 1234) sink.Write(sine.data() + at * 2, std::min(1234LL, frames - at));
    EXPECT_EQ(sink.GetPosition(), frames);
    EXPECT_FALSE(sink.HasError());
  }
  if (c.codec == LFFmpegSinkCodec::kRF64) {
    const Bytes bytes = FileBytes(path);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + std::min<size_t>(4, bytes.size())), "RF64");
  }

  LSoundFileInfo info;
  LSoundSource back = LFFmpegSource::Open(path.c_str(), &info);
  ASSERT_FALSE(back.IsError());
  // Read through FFmpeg's own demuxer: what ffprobe would say.
  EXPECT_EQ(info.codecName, c.codecName);
  EXPECT_EQ(back.GetSampleRate(), 48000u);
  EXPECT_EQ(back.GetChannels(), 2);
  EXPECT_EQ(back.GetEndSample(), frames);
  EXPECT_STREQ(info.tags.Get("TITLE"), "Prüfton");
  EXPECT_STREQ(info.tags.Get("ARTIST"), "Sonvale");
  EXPECT_STREQ(info.tags.Get("TRACKNUMBER"), "3");
  const std::vector<float> got = ReadWhole(back);
  if (!c.floating && c.tolerance > 0.0) {
    EXPECT_EQ(got, ThroughWave(sine, c.bits));
  } else if (c.tolerance > 0.0) {
    EXPECT_LE(MaxDifference(got, sine), c.tolerance);
  } else {
    // Lossy: the same sine in the same place (a shift of one frame would differ by about 0.09).
    double worst = 0.0;
    for (size_t i = 9600; i + 9600 < got.size() && i < sine.size(); ++i) {
      worst = std::max(worst, std::fabs(static_cast<double>(got[i]) - sine[i]));
    }
    EXPECT_LT(worst, 0.05);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Codecs, FFmpegSinkWrites,
    ::testing::Values(SinkCase{"flac16", "a.flac", LFFmpegSinkCodec::kFlac, 16, false, "flac", 0.5 / 32768 + 1e-9},
                      SinkCase{"flac24", "b.flac", LFFmpegSinkCodec::kFlac, 24, false, "flac", 0.5 / 8388608 + 1e-9},
                      SinkCase{"vorbis", "c.ogg", LFFmpegSinkCodec::kVorbis, 16, false, "vorbis", 0.0},
                      SinkCase{"opus", "d.opus", LFFmpegSinkCodec::kOpus, 16, false, "opus", 0.0},
                      SinkCase{"rf64_24", "e.wav", LFFmpegSinkCodec::kRF64, 24, false, "pcm_s24le",
                               0.5 / 8388608 + 1e-9},
                      SinkCase{"rf64_float", "f.wav", LFFmpegSinkCodec::kRF64, 32, true, "pcm_f32le", 1e-9}),
    [](const ::testing::TestParamInfo<SinkCase>& i) { return std::string(i.param.name); });

TEST(FFmpegSink, FlacWrittenToAStreamReadsBackFromMemory) {
  LFFmpegSinkFormat format;
  SparseStream memory;
  format.codec = LFFmpegSinkCodec::kFlac;
  format.channels = 2;
  const std::vector<float> sine = SineFrames(5000, 2, 44100, 440.0);
  {
    LSNKFFmpeg sink(std::make_unique<SparseStream>(memory), format);
    sink.Write(sine.data(), 5000);
  }
  LSoundSource back = LFFmpegSource::Open(std::make_unique<SparseStream>(memory), "memory.flac");
  ASSERT_FALSE(back.IsError());
  EXPECT_EQ(back.GetEndSample(), 5000);
  EXPECT_LE(MaxDifference(ReadWhole(back), sine), 0.5 / 32768 + 1e-9);
}

TEST(FFmpegSink, EveryCodecWritesOneToEightChannels) {
  TempFolder folder;
  const std::string path = folder.File("mehr");
  for (LFFmpegSinkCodec codec :
       {LFFmpegSinkCodec::kFlac, LFFmpegSinkCodec::kVorbis, LFFmpegSinkCodec::kOpus, LFFmpegSinkCodec::kRF64}) {
    if (LSNKFFmpeg::MissingEncoder(codec)) continue;
    for (int channels = 1; channels <= 8; ++channels) {
      // libvorbisenc itself leaks a small block when it sets up 5.1, which leak checkers report.
      if (codec == LFFmpegSinkCodec::kVorbis && channels == 6) continue;
      LFFmpegSinkFormat format;
      format.codec = codec;
      format.sampleRate = 48000;
      format.channels = static_cast<std::uint8_t>(channels);
      {
        LSNKFFmpeg sink(path.c_str(), format);
        const std::vector<float> sine = SineFrames(4800, channels, 48000, 440.0);
        sink.Write(sine.data(), 4800);
        sink.Complete();
        EXPECT_FALSE(sink.HasError()) << static_cast<int>(codec) << " " << channels;
        // Nothing goes in after completion.
        sink.Write(sine.data(), 1);
        EXPECT_TRUE(sink.HasError());
        EXPECT_EQ(sink.GetPosition(), 4800);
      }
      LSoundSource back = LFFmpegSource::Open(path.c_str());
      ASSERT_FALSE(back.IsError()) << static_cast<int>(codec) << " " << channels;
      EXPECT_EQ(back.GetChannels(), channels);
      // FFmpeg reads Vorbis up to 128 frames short at the end.
      EXPECT_NEAR(back.GetEndSample(), 4800, codec == LFFmpegSinkCodec::kVorbis ? 128 : 0);
    }
  }
}

#else

TEST(FFmpegSink, WithoutFFmpegTheSinkFails) {
  TempFolder folder;
  LSNKFFmpeg sink(folder.File("a.flac").c_str(), LFFmpegSinkFormat{});
  EXPECT_TRUE(sink.HasError());
  EXPECT_NE(LSNKFFmpeg::MissingEncoder(LFFmpegSinkCodec::kFlac), nullptr);
}

#endif
