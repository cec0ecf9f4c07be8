#include "formats/raw_file.h"

#include <gtest/gtest.h>

#include "codec_fixtures.h"
#include "formats/wave_file.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

TEST(RawFile, EveryFormatCodeRoundTripsThroughItsReader) {
  struct Case {
    std::int32_t code;
    int bytes;
    float maxAmplitude;
    std::vector<float> (*quantise)(const std::vector<float>&);
  };
  const Case cases[] = {
      {kLRawMuLaw, 1, 1.0f, &Quantised<LSFULAW>},           {kLRawALaw, 1, 1.0f, &Quantised<LSFALAW>},
      {kLRaw16, 2, 32767.0f / 32768.0f, &Quantised<LSF16>}, {kLRawU8, 1, 32767.0f / 32768.0f, &Quantised<LSFU8>},
      {kLRawS8, 1, 32767.0f / 32768.0f, &Quantised<LSFS8>}, {kLRawBE16, 2, 32767.0f / 32768.0f, &Quantised<LSFBE16>},
      {kLRawFloat, 4, 16.0f, &Quantised<LSFF32>},           {kLRawFloatBE, 4, 16.0f, &Quantised<LSFFRE32>},
  };
  TempFolder folder;
  for (int channels : {1, 2}) {
    for (const Case& c : cases) {
      const std::string path = folder.File("x.raw");
      const LRawSettings settings{22050, static_cast<std::uint8_t>(channels), c.code};
      const std::vector<float> sine = SineFrames(10001, channels, 22050, 35.0, 0.9);
      {
        LSoundSink sink = LRawFile::OpenSink(path.c_str(), settings);
        for (long long done = 0; done < 10001; done += 234) {
          sink.Write(sine.data() + done * channels, std::min(234LL, 10001 - done));
        }
      }
      EXPECT_EQ(FileBytes(path).size(), static_cast<size_t>(10001 * channels * c.bytes)) << c.code;
      LSoundSource source = LRawFile::OpenSource(path.c_str(), settings);
      EXPECT_EQ(source.GetEndSample(), 10001) << c.code;
      EXPECT_EQ(source.GetSampleRate(), 22050u);
      EXPECT_EQ(source.GetMaxAmplitude(), c.maxAmplitude) << c.code;
      EXPECT_EQ(ReadFrames(source, 10001, 234), c.quantise(sine)) << c.code << " with " << channels << " channels";
    }
  }
}

TEST(RawFile, UnknownCodesAndMissingFilesGiveTheirErrors) {
  TempFolder folder;
  EXPECT_EQ(LRawFile::OpenSource(folder.File("a.raw").c_str(), LRawSettings{8000, 1, 9}).GetErrorCode(),
            kLSourceClosed);
  LSoundSource missing = LRawFile::OpenSource(folder.File("none.raw").c_str(), LRawSettings{16000, 2, kLRaw16});
  EXPECT_EQ(missing.GetErrorCode(), kLSourceCannotOpen);
  EXPECT_EQ(missing.GetEndSample(), 0);
  EXPECT_EQ(missing.GetSampleRate(), 16000u);
  EXPECT_TRUE(LRawFile::OpenSink(folder.File("v.vox").c_str(), LRawSettings{8000, 1, kLRawVOX}).HasError());
  EXPECT_TRUE(LRawFile::OpenSink(folder.File("v.raw").c_str(), LRawSettings{8000, 1, -1}).HasError());
}

TEST(RawFile, APartialLastFrameIsNotRead) {
  Bytes bytes = Staircase16(3, 2);
  bytes.push_back(0x7F);
  LSoundSource source = LRawFile::OpenSource(Memory(bytes), LRawSettings{8000, 2, kLRaw16});
  EXPECT_EQ(source.GetEndSample(), 3);
  std::vector<float> got = ReadFrames(source, 4);
  EXPECT_EQ(got[5], 5 / 32767.0f);
  EXPECT_EQ(got[6], 0.0f);
}

TEST(RawFile, G711WavesHaveTheirDeliberateHeaderFieldsAPadByteWhenOddAndReadBack) {
  TempFolder folder;
  const std::string path = folder.File("u.wav");
  const float frames[6] = {0, 0, 0.5f, -0.5f, 1, -1};
  {
    LSoundSink sink = LWaveFile::OpenSink(path.c_str(), LWaveFileFormat{kLWaveTagMuLaw, 2, 8000, 8, false});
    EXPECT_EQ(FileBytes(path).size(), 58u);
    sink.Write(frames, 3);
  }
  Bytes b = FileBytes(path);
  ASSERT_EQ(b.size(), 64u);
  const Bytes header = {'R',  'I',  'F', 'F', 56,   0,    0, 0, 'W', 'A', 'V', 'E', 'f', 'm', 't', ' ', 18, 0, 0, 0,
                        7,    0,    2,   0,   0x40, 0x1F, 0, 0,  // tag 7, 2 channels, 8000 Hz
                        0x40, 0x1F, 0,   0,                      // bytes per second: the sample rate itself
                        8,    0,    8,   0,   0,    0,           // block align 8, 8 bits, extra size 0
                        'f',  'a',  'c', 't', 4,    0,    0, 0, 3,   0,   0,   0,   'd', 'a', 't', 'a', 6,  0, 0, 0};
  EXPECT_EQ(Bytes(b.begin(), b.begin() + 58), header);
  LSoundSource source = LWaveFile::OpenSource(path.c_str());
  ASSERT_EQ(source.GetErrorCode(), kLSourceOK);
  EXPECT_EQ(source.GetEndSample(), 3);
  EXPECT_EQ(ReadFrames(source, 3), Quantised<LSFULAW>(std::vector<float>(frames, frames + 6)));

  const std::string odd = folder.File("a.wav");
  const std::vector<float> sine = SineFrames(4001, 1, 8000, 12.7, 0.9);
  {
    LSoundSink sink = LWaveFile::OpenSink(odd.c_str(), LWaveFileFormat{kLWaveTagALaw, 1, 8000, 8, false});
    sink.Write(sine.data(), 4001);
  }
  b = FileBytes(odd);
  EXPECT_EQ(b.size(), 58u + 4001u + 1u);
  EXPECT_EQ(GetLE16(b, 20), kLWaveTagALaw);
  EXPECT_EQ(GetLE32(b, 46), 4001u);
  LSoundSource alaw = LWaveFile::OpenSource(odd.c_str());
  EXPECT_EQ(alaw.GetEndSample(), 4001);
  EXPECT_EQ(ReadFrames(alaw, 4001, 234), Quantised<LSFALAW>(sine));
}
