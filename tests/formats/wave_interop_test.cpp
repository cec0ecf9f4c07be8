// WAVE files judged by outside programs: what sox writes reads here with our
// scaling, and what we write opens in sox and ffprobe with our rate, channels
// and length.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <sstream>

#include "formats/raw_file.h"
#include "formats/wave_file.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

namespace {

// The stored values of a raw file, scaled as the reader scales them.
std::vector<float> Scaled(const Bytes& raw, const std::string& layout) {
  std::vector<float> out;
  if (layout == "u8") {
    for (unsigned char b : raw) out.push_back(static_cast<float>(static_cast<std::int8_t>(b ^ 0x80)) / 127.0f);
  } else if (layout == "s16") {
    for (size_t i = 0; i + 1 < raw.size(); i += 2) out.push_back(static_cast<std::int16_t>(GetLE16(raw, i)) / 32767.0f);
  } else if (layout == "s24" || layout == "s32") {
    // Left-aligned into 32 bits, as the reader scales both.
    const size_t width = layout == "s24" ? 3 : 4;
    for (size_t i = 0; i + width <= raw.size(); i += width) {
      std::uint32_t v = 0;
      for (size_t k = 0; k < width; ++k) v |= static_cast<std::uint32_t>(raw[i + k]) << (8 * (k + 4 - width));
      out.push_back(static_cast<float>(static_cast<std::int32_t>(v) / 2147483647.0));
    }
  } else if (layout == "f64") {
    for (size_t i = 0; i + 7 < raw.size(); i += 8) {
      double v;
      std::memcpy(&v, raw.data() + i, 8);
      out.push_back(static_cast<float>(v));
    }
  }
  return out;
}

struct SoxLayout {
  const char* name;
  const char* options;
  int channels;
  const char* type;  // "wav" lets sox choose (extensible above 16 bits or 2 channels), "wavpcm" forbids extensible
};

class WaveFromSox : public ::testing::TestWithParam<SoxLayout> {};

}  // namespace

TEST_P(WaveFromSox, ReadsWithOurScalingExactly) {
  if (!HaveTool("sox")) GTEST_SKIP() << "sox is not installed";
  const SoxLayout& p = GetParam();
  TempFolder folder;
  const std::string wav = folder.File("s.wav"), raw = folder.File("s.raw");
  std::ostringstream make;
  make << "sox -n -r 8000 -c " << p.channels << " " << p.options << " -t " << p.type << " " << wav
       << " synth 0.3 sine 440 sine 660 sine 880 gain -1";
  ASSERT_TRUE(RunTool(make.str()));
  ASSERT_TRUE(RunTool("sox " + wav + " -t raw " + raw));
  LWaveFileFormat format;
  LSoundSource source = LWaveFile::OpenSource(wav.c_str(), &format);
  ASSERT_EQ(source.GetErrorCode(), kLSourceOK) << p.name << " tag " << format.tag;
  EXPECT_EQ(source.GetSampleRate(), 8000u);
  EXPECT_EQ(source.GetChannels(), p.channels);
  EXPECT_EQ(source.GetEndSample(), 2400);
  std::vector<float> ours = ReadFrames(source, 2400, 234);
  std::vector<float> expect;
  const std::string name = p.name;
  if (name == "alaw" || name == "ulaw") {
    LSoundSource rawSource = LRawFile::OpenSource(raw.c_str(), LRawSettings{8000, static_cast<std::uint8_t>(p.channels),
                                                                            name == "alaw" ? kLRawALaw : kLRawMuLaw});
    expect = ReadFrames(rawSource, 2400);
  } else {
    expect = Scaled(FileBytes(raw), name.substr(0, 3));
  }
  EXPECT_EQ(ours, expect) << p.name;
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, WaveFromSox,
    ::testing::Values(SoxLayout{"u8", "-e unsigned -b 8", 1, "wav"}, SoxLayout{"s16_3ch", "-e signed -b 16", 3, "wav"},
                      SoxLayout{"s24", "-e signed -b 24", 2, "wav"}, SoxLayout{"s32pcm", "-e signed -b 32", 1, "wavpcm"},
                      SoxLayout{"f64", "-e floating-point -b 64", 1, "wav"}, SoxLayout{"ulaw", "-e mu-law", 2, "wav"}),
    [](const ::testing::TestParamInfo<SoxLayout>& info) { return std::string(info.param.name); });

namespace {

struct Written {
  const char* name;
  LWaveFileFormat format;
  bool floatExport;
  long long frames;  // what soxi and ffmpeg should count
};

std::string WriteWith(const TempFolder& folder, const Written& w) {
  const std::string path = folder.File(std::string(w.name) + ".wav");
  LSoundSink sink = w.floatExport ? LWaveFile::OpenSinkFloatExport(path.c_str(), static_cast<int>(w.format.sampleRate),
                                                                   static_cast<unsigned char>(w.format.channels))
                                  : LWaveFile::OpenSink(path.c_str(), w.format);
  std::vector<float> v(static_cast<size_t>(4001 * w.format.channels));
  for (size_t i = 0; i < v.size(); ++i) v[i] = 0.5f * std::sin(0.05f * static_cast<float>(i));
  sink.Write(v.data(), 4001);
  return path;
}

const Written kWritten[] = {
    {"pcm8", {kLWaveTagPCM, 2, 22050, 8, false}, false, 4001},
    {"pcm16", {kLWaveTagPCM, 1, 44100, 16, true}, false, 4001},
    {"pcm24", {kLWaveTagPCM, 2, 48000, 24, false}, false, 4001},
    {"pcm32", {kLWaveTagPCM, 2, 96000, 32, false}, false, 4001},
    {"float46", {kLWaveTagIEEEFloat, 2, 44100, 32, false}, false, 4001},
    {"floatexport", {kLWaveTagIEEEFloat, 2, 44100, 32, false}, true, 4001},
    {"alaw", {kLWaveTagALaw, 1, 8000, 8, false}, false, 4001},
    {"ulaw", {kLWaveTagMuLaw, 1, 8000, 8, false}, false, 4001},
    {"ima", {kLWaveTagIMAADPCM, 1, 8000, 4, false}, false, 4002},  // the last block is filled to 8-sample groups
#ifdef SONVALE_HAVE_GSM
    {"gsm", {kLWaveTagGSM610, 1, 8000, 0, false}, false, 4160},
#endif
};

}  // namespace

TEST(WaveInterop, WhatWeWriteOpensInSoxAndFfprobeAndDecodesInFfmpegWithOurRateChannelsAndLength) {
  const bool sox = HaveTool("soxi"), ffmpeg = HaveTool("ffprobe") && HaveTool("ffmpeg");
  if (!sox && !ffmpeg) GTEST_SKIP() << "neither soxi (sox) nor ffprobe and ffmpeg are installed";
  TempFolder folder;
  for (const Written& w : kWritten) {
    const std::string path = WriteWith(folder, w);
    if (sox) {
      std::string rate, channels, samples;
      ASSERT_TRUE(RunTool("soxi -r " + path, &rate) && RunTool("soxi -c " + path, &channels) &&
                  RunTool("soxi -s " + path, &samples))
          << w.name;
      EXPECT_EQ(std::stol(rate), static_cast<long>(w.format.sampleRate)) << w.name;
      EXPECT_EQ(std::stol(channels), w.format.channels) << w.name;
      EXPECT_EQ(std::stoll(samples), w.frames) << w.name;
    }
    if (ffmpeg) {
      std::string probe;
      ASSERT_TRUE(RunTool(
          "ffprobe -v error -select_streams a:0 -show_entries stream=sample_rate,channels -of csv=p=0 " + path, &probe))
          << w.name;
      EXPECT_EQ(probe, std::to_string(w.format.sampleRate) + "," + std::to_string(w.format.channels) + "\n") << w.name;
      const std::string raw = folder.File(std::string(w.name) + ".raw");
      ASSERT_TRUE(RunTool("ffmpeg -v error -y -i " + path + " -f s16le " + raw)) << w.name;
      EXPECT_EQ(static_cast<long long>(FileBytes(raw).size()), w.frames * 2 * w.format.channels) << w.name;
    }
  }
}
